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
        QCOMPARE(DesktopTexts::howToCapture({ false, false }),
            u"Vexet penceresinden alan, pencere veya ekran yakala. Kısayollarını Ayarlar’dan değiştir; "
            u"önizlemede kırp, kopyala ve kaydet."_s);
        QCOMPARE(DesktopTexts::howToCapture({ true, false }),
            u"Vexet penceresinden alan, pencere veya ekran yakala. Kısayollarını masaüstünün klavye "
            u"ayarlarında ata; önizlemede kırp, kopyala ve kaydet."_s);
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

    void theDesktopsOwnShortcutSettingsAreNamed()
    {
        QCOMPARE(DesktopTexts::unboundCommandsLead(),
            u"Masaüstü şu komutlara tuş atamadı; önerilen birleşim başka bir işe ayrılmış olabilir. "
            u"Masaüstünün ayarlarında klavye kısayolları bölümünde, Vexet’in kısayolları arasında onlara "
            u"birer tuş ata:\n"_s);
        QCOMPARE(DesktopTexts::desktopShortcutsPlace(),
            u"Kısayolları masaüstün atar. Değiştirmek için masaüstünün ayarlarında klavye kısayolları "
            u"bölümünü aç; Vexet’in komutları orada Vexet adıyla listelenir."_s);
        QCOMPARE(DesktopTexts::bindCommandsYourself(),
            u"Bu masaüstü, uygulamaların kendi kısayol tuşlarını almasına izin vermez; kısayolları kendisi "
            u"atar. Masaüstünün ayarlarında klavye kısayolları bölümünde şu komutlara birer tuş ata:\n"
            u"Alan seçerek yakala: vexet --capture region\n"
            u"Pencere yakala: vexet --capture window\n"
            u"Ekranı yakala: vexet --capture screen\n"
            u"Video kaydı başlat / durdur: vexet --capture video\n"
            u"Komutlar Vexet kapalıyken onu da başlatır; Ayarlar penceresinden kopyalanabilir."_s);
    }

    void noTextNamesAnotherSystemsPlaces()
    {
        for (const bool wayland : { false, true }) {
            for (const bool tray : { false, true }) {
                const DesktopFacts facts { wayland, tray };
                for (const QString& text : { DesktopTexts::howToCapture(facts), DesktopTexts::privacy(facts),
                         DesktopTexts::shortcutFailuresLead(facts), DesktopTexts::screenshotPermission(),
                         DesktopTexts::unboundCommandsLead(), DesktopTexts::desktopShortcutsPlace(),
                         DesktopTexts::bindCommandsYourself() }) {
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
