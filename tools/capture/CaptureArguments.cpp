#include "CaptureArguments.h"

#include "CaptureToolProtocol.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// A monitor number: decimal digits only, 1 or more.
std::optional<int> displayNumber(const QString& text)
{
    if (text.isEmpty() || text.size() > 4)
        return std::nullopt;
    for (QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
    }
    const int value = text.toInt();
    return value >= 1 ? std::optional<int>(value) : std::nullopt;
}

std::optional<CaptureRequest::Format> fileFormat(const QString& text)
{
    const QString name = text.toLower();
    if (name == CaptureToolProtocol::png)
        return CaptureRequest::Format::png;
    if (name == CaptureToolProtocol::jpg || name == u"jpeg"_s)
        return CaptureRequest::Format::jpeg;
    return std::nullopt;
}

} // namespace

CaptureArguments CaptureArguments::parse(const QStringList& arguments)
{
    bool interactive = false;
    bool selection = false;
    bool window = false;
    bool noShadow = false;
    std::optional<int> display;
    CaptureRequest::Format format = CaptureRequest::Format::png;
    QStringList files;
    bool optionsEnded = false;

    // Asking for help is never wrong, whatever else stands beside it.
    for (const QString& argument : arguments) {
        if (argument == u"--"_s)
            break;
        if (argument == u"-h"_s || argument == u"--help"_s) {
            CaptureArguments result;
            result.m_outcome = Outcome::help;
            return result;
        }
    }

    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (optionsEnded || argument.size() < 2 || !argument.startsWith(u'-')) {
            files.append(argument);
            continue;
        }
        if (argument == u"--"_s) {
            optionsEnded = true;
        } else if (argument == CaptureToolProtocol::silent) {
            // Silent: there is no sound to leave out.
        } else if (argument == CaptureToolProtocol::interactive) {
            interactive = true;
        } else if (argument == CaptureToolProtocol::selection) {
            selection = true;
        } else if (argument == CaptureToolProtocol::window) {
            window = true;
        } else if (argument == CaptureToolProtocol::noShadow) {
            noShadow = true;
        } else if (argument == CaptureToolProtocol::type) {
            if (i + 1 >= arguments.size())
                return refused(u"-t seçeneği bir dosya türü ister: png ya da jpg."_s);
            const QString& value = arguments.at(++i);
            const std::optional<CaptureRequest::Format> known = fileFormat(value);
            if (!known)
                return refused(u"Bilinmeyen dosya türü: %1 (png ya da jpg olmalı)."_s.arg(value));
            format = *known;
        } else if (argument == CaptureToolProtocol::display) {
            if (i + 1 >= arguments.size())
                return refused(u"-D seçeneği bir ekran numarası ister."_s);
            const QString& value = arguments.at(++i);
            display = displayNumber(value);
            if (!display)
                return refused(u"Ekran numarası 1 ya da daha büyük bir tam sayı olmalı: %1"_s.arg(value));
        } else {
            return refused(u"Bilinmeyen seçenek: %1"_s.arg(argument));
        }
    }

    if (display && interactive)
        return refused(u"-D ile -i birlikte kullanılamaz."_s);
    if (selection && window)
        return refused(u"-s ile -w birlikte kullanılamaz."_s);
    if (!interactive && (selection || window))
        return refused(u"-s ve -w yalnızca -i ile kullanılır."_s);
    if (interactive && !selection && !window)
        return refused(u"-i ile birlikte -s ya da -w gerekir."_s);
    if (noShadow && !window)
        return refused(u"-o yalnızca pencere modunda (-i -w) kullanılır."_s);
    if (files.isEmpty())
        return refused(u"Dosya adı verilmedi."_s);
    if (files.size() > 1)
        return refused(u"Birden çok dosya adı verildi: %1"_s.arg(files.join(u", "_s)));
    if (files.first().isEmpty())
        return refused(u"Dosya adı boş olamaz."_s);

    CaptureArguments result;
    result.m_outcome = Outcome::capture;
    result.m_request.mode = !interactive ? CaptureRequest::Mode::screen
        : selection                      ? CaptureRequest::Mode::region
                                         : CaptureRequest::Mode::window;
    result.m_request.display = display;
    result.m_request.format = format;
    result.m_request.path = files.first();
    return result;
}

CaptureArguments CaptureArguments::refused(const QString& reason)
{
    CaptureArguments result;
    result.m_outcome = Outcome::usageError;
    result.m_error = reason;
    return result;
}

QString CaptureArguments::usage()
{
    return u"Kullanım: vexet-capture [-x] [-t png|jpg] [-D N | -i -s | -i -w [-o]] DOSYA"_s;
}

QString CaptureArguments::usageErrorText() const
{
    return u"vexet-capture: %1\n%2\nAyrıntılar için: vexet-capture --help\n"_s.arg(m_error, usage());
}

QString CaptureArguments::help()
{
    return usage() + u"\n\n"_s
        + u"Ekran resmi alır ve DOSYA'ya yazar. DOSYA yalnızca resim alındığında oluşur;\n"
          "yarım kalmış bir dosya hiçbir zaman bırakılmaz. Wayland masaüstünde resmi\n"
          "masaüstünün ekran görüntüsü kapısından (xdg-desktop-portal) ister.\n"
          "\n"
          "Seçenekler:\n"
          "  -D N        N numaralı ekranın tamamını alır. Ekranlar 1'den başlar;\n"
          "              1 ana ekrandır. -D, -i -s ve -i -w verilmezse farenin\n"
          "              bulunduğu ekranın tamamını alır.\n"
          "  -i -s       Masaüstünü dondurur; fareyle sürüklenen alanı alır. X11'de alan\n"
          "              birden çok ekrana yayılabilir; Wayland'de sürüklemenin başladığı\n"
          "              ekranda kalır.\n"
          "  -i -w       X11'de masaüstünü dondurur; farenin üzerinde durduğu pencereyi\n"
          "              gösterir, tıklanan pencereyi çerçevesiyle birlikte alır.\n"
          "              Wayland'de masaüstünün kendi seçicisini açar (bazı masaüstleri\n"
          "              yalnızca alan seçtirir).\n"
          "  -o          Pencere modunda gölgeyi almaz (X11'de pencere gölgesi zaten\n"
          "              alınmaz).\n"
          "  -t png|jpg  Dosya türü; varsayılan png.\n"
          "  -x          Ses çıkarmaz (vexet-capture hiç ses çıkarmaz).\n"
          "  -h, --help  Bu yardımı gösterir.\n"
          "\n"
          "Seçim sırasında Esc ya da sağ tık yakalamayı iptal eder.\n"
          "\n"
          "Çıkış durumu:\n"
          "  0  resim DOSYA'ya yazıldı\n"
          "  1  kullanıcı iptal etti\n"
          "  2  argümanlar yanlış ya da eksik\n"
          "  3  ekrana ulaşılamadı, klavye ve fare alınamadı ya da böyle bir ekran yok\n"
          "  4  DOSYA yazılamadı\n"
          "  5  masaüstü ekran resmi almaya izin vermedi\n"_s;
}
