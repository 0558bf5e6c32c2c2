#include "CommandLine.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace {

const QString captureOption = u"--capture"_s;
const QString settingsOption = u"--settings"_s;
const QString versionOption = u"--version"_s;

bool isOption(const QString& argument)
{
    return argument.size() > 1 && argument.startsWith(u'-');
}

QString missingModeText()
{
    return u"--capture bir yakalama türü ister: %1."_s.arg(AppCommand::modeList());
}

// One help line: the command in a column of its own, then what it does.
QString helpLine(const QString& command, const QString& meaning)
{
    return u"  "_s + command.leftJustified(20) + meaning + u'\n';
}

} // namespace

CommandLine CommandLine::parse(const QStringList& arguments)
{
    // Asking for help is never wrong, whatever else stands beside it.
    for (const QString& argument : arguments) {
        if (argument == u"-h"_s || argument == u"--help"_s) {
            CommandLine result;
            result.m_outcome = Outcome::help;
            return result;
        }
    }

    std::optional<CommandLine> chosen;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        CommandLine next;
        next.m_outcome = Outcome::run;
        if (argument == versionOption) {
            next.m_outcome = Outcome::version;
        } else if (argument == settingsOption) {
            next.m_command = AppCommand::settings();
        } else if (argument == captureOption || argument.startsWith(captureOption + u'=')) {
            QString name;
            if (argument != captureOption)
                name = argument.mid(captureOption.size() + 1);
            else if (i + 1 < arguments.size() && !isOption(arguments.at(i + 1)))
                name = arguments.at(++i);
            if (name.isEmpty())
                return refused(missingModeText());
            const std::optional<CaptureMode> mode = AppCommand::modeNamed(name);
            if (!mode)
                return refused(AppCommand::unknownModeText(name));
            next.m_command = AppCommand::capture(*mode);
        } else if (isOption(argument)) {
            return refused(u"Bilinmeyen seçenek: %1"_s.arg(argument));
        } else if (argument.isEmpty()) {
            return refused(u"Boş argüman verildi."_s);
        } else {
            return refused(u"Beklenmeyen argüman: %1"_s.arg(argument));
        }
        if (chosen)
            return refused(u"Yalnızca bir komut verilebilir."_s);
        chosen = next;
    }
    if (chosen)
        return *chosen;
    CommandLine reopen;
    reopen.m_outcome = Outcome::run;
    return reopen;
}

CommandLine CommandLine::refused(const QString& reason)
{
    CommandLine result;
    result.m_outcome = Outcome::usageError;
    result.m_error = reason;
    return result;
}

QString CommandLine::usage()
{
    return u"Kullanım: vexet [--capture region|window|screen|video | --settings | --help | --version]"_s;
}

QString CommandLine::usageErrorText() const
{
    return u"vexet: %1\n%2\nAyrıntılar için: vexet --help\n"_s.arg(m_error, usage());
}

QString CommandLine::help()
{
    QString commands;
    commands += helpLine(u"(komut yok)"_s, u"Vexet’i başlatır. Vexet zaten çalışıyorsa ve açık"_s);
    commands += helpLine(QString(), u"penceresi yoksa ayarları açar."_s);
    for (CaptureMode mode : CaptureModes::allCases)
        commands += helpLine(captureOption + u' ' + AppCommand::modeName(mode), CaptureModes::title(mode));
    commands += helpLine(settingsOption, u"Ayarlar penceresini açar."_s);
    commands += helpLine(u"-h, --help"_s, u"Bu yardımı gösterir."_s);
    commands += helpLine(versionOption, u"Sürümü gösterir."_s);

    return usage() + u"\n\n"_s
        + u"Vexet sistem tepsisinde çalışan ekran görüntüsü ve ekran kaydı aracıdır. Vexet\n"
          "zaten çalışıyorsa komut ona iletilir ve menüden seçilmiş gibi orada yerine\n"
          "getirilir; çalışmıyorsa Vexet başlar ve komutu açılır açılmaz yerine getirir.\n"
          "\n"
          "Komutlar:\n"_s
        + commands
        + u"\n"
          "Bu komutlar, masaüstünün klavye ayarlarında kısayol tuşlarına atanmak içindir:\n"
          "Wayland masaüstleri programların tuşları kendilerinin yakalamasına izin vermez.\n"
          "GNOME’da Ayarlar → Klavye → Özel Kısayollar, KDE Plasma’da Sistem Ayarları →\n"
          "Kısayollar, sway’de yapılandırma dosyasında örneğin:\n"
          "  bindsym Print exec vexet --capture region\n"
          "\n"
          "Qt’nin kendi seçenekleri (-platform, -style …) kabul edilmez; yerlerine Qt’nin\n"
          "ortam değişkenleri kullanılır (QT_QPA_PLATFORM, QT_STYLE_OVERRIDE …).\n"
          "\n"
          "Çıkış durumu:\n"
          "  0  komut çalışan Vexet’e iletildi ya da Vexet olağan biçimde kapandı\n"
          "  1  çalışan Vexet komutu kabul etmedi ya da yanıt vermedi\n"
          "  2  argümanlar yanlış ya da eksik\n"_s;
}

QString CommandLine::versionText(const QString& version)
{
    return u"Vexet %1\n"_s.arg(version);
}
