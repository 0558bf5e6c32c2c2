#include "DesktopTexts.h"

#include "AppCommand.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace DesktopTexts {

QString howToCapture(const DesktopFacts& facts)
{
    return (facts.tray ? u"Sistem tepsisindeki çerçeve simgesinden"_s : u"Vexet penceresinden"_s)
        + u" alan, pencere veya ekran yakala. "_s
        + (facts.wayland ? u"Kısayollarını masaüstünün klavye ayarlarında ata"_s
                         : u"Kısayollarını Ayarlar’dan değiştir"_s)
        + u"; önizlemede kırp, kopyala ve kaydet."_s;
}

QString privacy(const DesktopFacts& facts)
{
    const QString permission = facts.wayland
        ? u"Ekran resimlerini masaüstünün ekran görüntüsü kapısından ister; masaüstün ilk çekimde izin "
          u"sorabilir."_s
        : u"X11 masaüstünde ekran resmi için izin gerekmez."_s;
    return u"Görüntüler cihazında işlenir; Vexet sunucuya veri göndermez. "_s + permission
        + u" Bu tanıtım her kullanıcı için yalnızca ilk açılışta otomatik gösterilir."_s;
}

QString shortcutFailuresLead(const DesktopFacts& facts)
{
    return u"Şu kısayollar kaydedilemedi. "_s
        + (facts.tray ? u"Sistem tepsisindeki simgeden"_s : u"Vexet penceresinden"_s)
        + u" Ayarlar’ı açıp değiştirebilirsin:\n"_s;
}

QString unboundCommandsLead()
{
    return u"Masaüstü şu komutlara tuş atamadı; önerilen birleşim başka bir işe ayrılmış olabilir. "
           u"Masaüstünün ayarlarında klavye kısayolları bölümünde, Vexet’in kısayolları arasında "
           u"onlara birer tuş ata:\n"_s;
}

QString desktopShortcutsPlace()
{
    return u"Kısayolları masaüstün atar. Değiştirmek için masaüstünün ayarlarında klavye kısayolları "
           u"bölümünü aç; Vexet’in komutları orada Vexet adıyla listelenir."_s;
}

QString bindCommandsYourself()
{
    QStringList lines;
    for (CaptureMode mode : CaptureModes::allCases)
        lines.append(CaptureModes::title(mode) + u": "_s + AppCommand::captureCommandLine(mode));
    return u"Bu masaüstü, uygulamaların kendi kısayol tuşlarını almasına izin vermez; kısayolları kendisi "
           u"atar. Masaüstünün ayarlarında klavye kısayolları bölümünde şu komutlara birer tuş ata:\n"_s
        + lines.join(u'\n')
        + u"\nKomutlar Vexet kapalıyken onu da başlatır; Ayarlar penceresinden kopyalanabilir."_s;
}

QString screenshotPermission()
{
    return u"Masaüstün Vexet’in ekran resmi almasına izin vermedi. Masaüstünün ayarlarında gizlilik ya da "
           u"uygulama izinleri bölümünden Vexet’e ekran resmi izni ver; masaüstü sorarsa izin ver. Ardından "
           u"yakalamayı tekrar dene. Vexet yalnızca istediğin anda ekran resmi alır."_s;
}

QString noTray()
{
    return u"Bu masaüstünde sistem tepsisi olmadığı için Vexet’in komutları bu pencerede; pencereyi kapatsan "
           u"da Vexet çalışmaya devam eder."_s;
}

} // namespace DesktopTexts
