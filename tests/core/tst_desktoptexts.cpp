#include "DesktopTexts.h"

#include <QTest>

using namespace Qt::StringLiterals;

// The texts that name a place of the desktop say what is true where they are shown.
class TestDesktopTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theCommandsAreWhereTheDesktopShowsThem()
    {
        QCOMPARE(DesktopTexts::howToCapture({ false, true }),
            u"Sistem tepsisindeki çerçeve simgesinden alan, pencere veya ekran yakala. Kısayollarını "
            u"Ayarlar’dan "
            u"değiştir; önizlemede kırp, kopyala ve kaydet."_s);
        QCOMPARE(DesktopTexts::howToCapture({ true, false }),
            u"Vexet penceresinden alan, pencere veya ekran yakala. Kısayollarını Ayarlar’dan değiştir; "
            u"önizlemede kırp, kopyala ve kaydet."_s);
        QCOMPARE(DesktopTexts::shortcutFailuresLead({ false, true }),
            u"Şu kısayollar kaydedilemedi. Sistem tepsisindeki simgeden Ayarlar’ı açıp değiştirebilirsin:\n"_s);
        QCOMPARE(DesktopTexts::shortcutFailuresLead({ false, false }),
            u"Şu kısayollar kaydedilemedi. Vexet penceresinden Ayarlar’ı açıp değiştirebilirsin:\n"_s);
        QCOMPARE(DesktopTexts::noTray(),
            u"Bu masaüstünde sistem tepsisi olmadığı için Vexet’in komutları bu pencerede; pencereyi "
            u"kapatsan "
            u"da Vexet çalışmaya devam eder."_s);
    }

    void thePermissionIsTheDesktopsOwn()
    {
        QCOMPARE(DesktopTexts::privacy({ false, true }),
            u"Görüntüler cihazında işlenir; Vexet sunucuya veri göndermez. X11 masaüstünde ekran resmi için "
            u"izin gerekmez. Bu tanıtım her kullanıcı için yalnızca ilk açılışta otomatik gösterilir."_s);
        QCOMPARE(DesktopTexts::privacy({ true, true }),
            u"Görüntüler cihazında işlenir; Vexet sunucuya veri göndermez. Ekran resimlerini masaüstünün "
            u"ekran görüntüsü kapısından ister; masaüstün ilk çekimde izin sorabilir. Bu tanıtım her "
            u"kullanıcı için yalnızca ilk açılışta otomatik gösterilir."_s);
    }

    void aRefusedPictureSaysWhereToAllowIt()
    {
        QCOMPARE(DesktopTexts::screenshotPermission(),
            u"Masaüstün Vexet’in ekran resmi almasına izin vermedi. Masaüstünün ayarlarında gizlilik ya da "
            u"uygulama izinleri bölümünden Vexet’e ekran resmi izni ver; masaüstü sorarsa izin ver. Ardından "
            u"yakalamayı tekrar dene. Vexet yalnızca istediğin anda ekran resmi alır."_s);
    }

    void noTextNamesAnotherSystemsPlaces()
    {
        for (const bool wayland : { false, true }) {
            for (const bool tray : { false, true }) {
                const DesktopFacts facts { wayland, tray };
                for (const QString& text : { DesktopTexts::howToCapture(facts), DesktopTexts::privacy(facts),
                         DesktopTexts::shortcutFailuresLead(facts), DesktopTexts::screenshotPermission() }) {
                    QVERIFY2(!text.contains(u"macOS"_s), qPrintable(text));
                    QVERIFY2(!text.contains(u"enü çubu"_s), qPrintable(text));
                    QVERIFY2(!text.contains(u"Sistem Ayarları"_s), qPrintable(text));
                }
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestDesktopTexts)
#include "tst_desktoptexts.moc"
