#include "CommandLine.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(CommandLine::Outcome)
Q_DECLARE_METATYPE(AppCommand)

namespace {

const QString usageLine
    = u"Kullanım: vexet [--capture region|window|screen|video | --settings | --help | --version]"_s;
const QString missingMode = u"--capture bir yakalama türü ister: region, window, screen ya da video."_s;
const QString oneCommandOnly = u"Yalnızca bir komut verilebilir."_s;

QString unknownMode(const QString& name)
{
    return u"Bilinmeyen yakalama türü: "_s + name + u" (region, window, screen ya da video olmalı)."_s;
}

} // namespace

class TestCommandLine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void commands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<CommandLine::Outcome>("outcome");
        QTest::addColumn<AppCommand>("command");

        const auto run = CommandLine::Outcome::run;
        QTest::newRow("nothing reopens") << QStringList() << run << AppCommand();
        QTest::newRow("capture region")
            << QStringList { u"--capture"_s, u"region"_s } << run << AppCommand::capture(CaptureMode::region);
        QTest::newRow("capture window")
            << QStringList { u"--capture"_s, u"window"_s } << run << AppCommand::capture(CaptureMode::window);
        QTest::newRow("capture screen")
            << QStringList { u"--capture"_s, u"screen"_s } << run << AppCommand::capture(CaptureMode::screen);
        QTest::newRow("capture video")
            << QStringList { u"--capture"_s, u"video"_s } << run << AppCommand::capture(CaptureMode::video);
        QTest::newRow("capture=screen")
            << QStringList { u"--capture=screen"_s } << run << AppCommand::capture(CaptureMode::screen);
        QTest::newRow("settings") << QStringList { u"--settings"_s } << run << AppCommand::settings();
        QTest::newRow("version") << QStringList { u"--version"_s } << CommandLine::Outcome::version
                                 << AppCommand();
        QTest::newRow("help") << QStringList { u"--help"_s } << CommandLine::Outcome::help << AppCommand();
        QTest::newRow("-h") << QStringList { u"-h"_s } << CommandLine::Outcome::help << AppCommand();
        QTest::newRow("help beside a wrong command")
            << QStringList { u"--capture"_s, u"bogus"_s, u"--help"_s } << CommandLine::Outcome::help
            << AppCommand();
        QTest::newRow("help before anything")
            << QStringList { u"-h"_s, u"extra"_s } << CommandLine::Outcome::help << AppCommand();
    }

    void commands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(CommandLine::Outcome, outcome);
        QFETCH(AppCommand, command);
        const CommandLine parsed = CommandLine::parse(arguments);
        QCOMPARE(parsed.outcome(), outcome);
        QVERIFY(parsed.command() == command);
        QCOMPARE(parsed.error(), QString());
    }

    void errors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");

        QTest::newRow("unknown option") << QStringList { u"--bogus"_s } << u"Bilinmeyen seçenek: --bogus"_s;
        QTest::newRow("Qt's own option")
            << QStringList { u"-platform"_s, u"xcb"_s } << u"Bilinmeyen seçenek: -platform"_s;
        QTest::newRow("option with a value")
            << QStringList { u"--settings=1"_s } << u"Bilinmeyen seçenek: --settings=1"_s;
        QTest::newRow("capture without a mode") << QStringList { u"--capture"_s } << missingMode;
        QTest::newRow("capture= without a mode") << QStringList { u"--capture="_s } << missingMode;
        QTest::newRow("capture followed by an option")
            << QStringList { u"--capture"_s, u"--settings"_s } << missingMode;
        QTest::newRow("unknown mode")
            << QStringList { u"--capture"_s, u"bogus"_s } << unknownMode(u"bogus"_s);
        QTest::newRow("modes are lower case")
            << QStringList { u"--capture"_s, u"Screen"_s } << unknownMode(u"Screen"_s);
        QTest::newRow("unknown mode after =")
            << QStringList { u"--capture=area"_s } << unknownMode(u"area"_s);
        QTest::newRow("the menu's number is no mode")
            << QStringList { u"--capture"_s, u"3"_s } << unknownMode(u"3"_s);
        QTest::newRow("extra after capture")
            << QStringList { u"--capture"_s, u"screen"_s, u"window"_s } << u"Beklenmeyen argüman: window"_s;
        QTest::newRow("extra after settings")
            << QStringList { u"--settings"_s, u"now"_s } << u"Beklenmeyen argüman: now"_s;
        QTest::newRow("extra after version")
            << QStringList { u"--version"_s, u"1"_s } << u"Beklenmeyen argüman: 1"_s;
        QTest::newRow("a word alone") << QStringList { u"screen"_s } << u"Beklenmeyen argüman: screen"_s;
        QTest::newRow("a lone dash") << QStringList { u"-"_s } << u"Beklenmeyen argüman: -"_s;
        QTest::newRow("an empty argument") << QStringList { QString() } << u"Boş argüman verildi."_s;
        QTest::newRow("two commands")
            << QStringList { u"--settings"_s, u"--capture"_s, u"screen"_s } << oneCommandOnly;
        QTest::newRow("the same command twice")
            << QStringList { u"--settings"_s, u"--settings"_s } << oneCommandOnly;
        QTest::newRow("version and a command")
            << QStringList { u"--version"_s, u"--capture=video"_s } << oneCommandOnly;
        QTest::newRow("unknown option after a command")
            << QStringList { u"--capture"_s, u"region"_s, u"--now"_s } << u"Bilinmeyen seçenek: --now"_s;
    }

    void errors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        const CommandLine parsed = CommandLine::parse(arguments);
        QCOMPARE(parsed.outcome(), CommandLine::Outcome::usageError);
        QCOMPARE(parsed.error(), error);
        QCOMPARE(parsed.usageErrorText(),
            u"vexet: "_s + error + u"\n"_s + usageLine + u"\nAyrıntılar için: vexet --help\n"_s);
    }

    void usageAndVersion()
    {
        QCOMPARE(CommandLine::usage(), usageLine);
        QCOMPARE(CommandLine::versionText(u"0.9.1~rc2"_s), u"Vexet 0.9.1~rc2\n"_s);
    }

    void helpNamesEveryCommandAndWhereToBindIt()
    {
        const QString expected = usageLine + u"\n\n"_s
            + u"Vexet sistem tepsisinde çalışan ekran görüntüsü ve ekran kaydı aracıdır. Vexet\n"
              "zaten çalışıyorsa komut ona iletilir ve menüden seçilmiş gibi orada yerine\n"
              "getirilir; çalışmıyorsa Vexet başlar ve komutu açılır açılmaz yerine getirir.\n"
              "\n"
              "Komutlar:\n"
              "  (komut yok)         Vexet’i başlatır. Vexet zaten çalışıyorsa ve açık\n"
              "                      penceresi yoksa ayarları açar.\n"
              "  --capture region    Alan seçerek yakala\n"
              "  --capture window    Pencere yakala\n"
              "  --capture screen    Ekranı yakala\n"
              "  --capture video     Video kaydı başlat / durdur\n"
              "  --settings          Ayarlar penceresini açar.\n"
              "  -h, --help          Bu yardımı gösterir.\n"
              "  --version           Sürümü gösterir.\n"
              "\n"
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
        QCOMPARE(CommandLine::help(), expected);
    }
};

QTEST_APPLESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
