#include "DesktopTexts.h"

using namespace Qt::StringLiterals;

namespace DesktopTexts {

QString howToCapture(const DesktopFacts& facts)
{
    return (facts.tray ? u"Sistem tepsisindeki çerçeve simgesinden"_s : u"Vexet penceresinden"_s)
        + u" alan, pencere veya ekran yakala. Kısayollarını Ayarlar’dan değiştir; önizlemede kırp, kopyala "
          u"ve "
          u"kaydet."_s;
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
