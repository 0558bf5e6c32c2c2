#include "AboutController.h"
#include "AppDelegate.h"
#include "Fakes.h"
#include "Preferences.h"
#include "StatusWindow.h"
#include "TrayProbe.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The program on a Wayland desktop without a tray (stock GNOME has none): its commands come up in
// the Vexet window, and every text says what is true there.
class TestWaylandNoTray : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    TrayProbe m_tray;
    FakeCaptureService* m_capture = nullptr;
    std::unique_ptr<AppDelegate> m_delegate;

private Q_SLOTS:
    void initTestCase()
    {
        // Before anything of this process asks whether there is a tray: Qt asks once.
        QVERIFY2(m_tray.setHostRegistered(false), qPrintable(m_tray.errorString()));
        m_preferences = std::make_unique<Preferences>(
            std::make_unique<QSettings>(m_dir.filePath(u"Vexet.conf"_s), QSettings::IniFormat));
        m_preferences->setHasWelcomed(true);
        AppDelegate::Services services;
        auto capture = std::make_unique<FakeCaptureService>();
        m_capture = capture.get();
        services.captureService = std::move(capture);
        services.waylandSession = true;
        services.exitEventLoop = [] {};
        m_delegate = std::make_unique<AppDelegate>(*m_preferences, std::move(services));
        m_delegate->applicationDidFinishLaunching();
    }

    void cleanupTestCase()
    {
        m_delegate.reset();
        m_tray.setHostRegistered(true);
    }

    void theVexetWindowOffersTheMenusCommands()
    {
        QVERIFY(!m_delegate->desktop().tray);
        StatusWindow* window = m_delegate->statusWindow();
        QVERIFY(window);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(window->windowTitle(), u"Vexet"_s);
        const QList<QLabel*> labels = window->findChildren<QLabel*>();
        QVERIFY(std::any_of(labels.cbegin(), labels.cend(), [](const QLabel* label) {
            return label->text()
                == u"Bu masaüstünde sistem tepsisi olmadığı için Vexet’in komutları bu pencerede; pencereyi "
                   u"kapatsan da Vexet çalışmaya devam eder."_s;
        }));
        QStringList titles;
        for (const QPushButton* button : window->findChildren<QPushButton*>())
            titles.append(button->text());
        QCOMPARE(titles,
            (QStringList { u"Alan seçerek yakala     ⌥⇧⌘3"_s, u"Pencere yakala     ⌥⇧⌘4"_s,
                u"Ekranı yakala     ⌥⇧⌘5"_s, u"Video kaydı başlat / durdur     ⌥⇧⌘G"_s, u"Ayarlar…"_s,
                u"Vexet hakkında"_s, u"Çıkış"_s }));

        // A command from here is the menu's command.
        window->button(CaptureMode::screen)->click();
        QCOMPARE(m_capture->requests, QList<CaptureMode> { CaptureMode::screen });

        // The recording's time shows here as the tray's tooltip would show it.
        m_delegate->videoStatusChanged(true, u"00:07"_s);
        QCOMPARE(window->button(CaptureMode::video)->text(), u"Kaydı durdur / iptal et"_s);
        QVERIFY(window->statusLabel()->isVisibleTo(window));
        QCOMPARE(window->statusLabel()->text(), u"00:07"_s);
        m_delegate->videoStatusChanged(false, {});
        QCOMPARE(window->button(CaptureMode::video)->text(), u"Video kaydı başlat / durdur     ⌥⇧⌘G"_s);
        QVERIFY(!window->statusLabel()->isVisibleTo(window));
    }

    void closingItDoesNotQuitAndAnotherStartShowsItAgain()
    {
        StatusWindow* window = m_delegate->statusWindow();
        QVERIFY(window->close());
        QVERIFY(!window->isVisible());
        QVERIFY(m_delegate->applicationShouldHandleReopen());
        QVERIFY(QTest::qWaitForWindowExposed(window));
    }

    void theAboutWindowSaysWhereTheCommandsAre()
    {
        m_delegate->openAbout();
        AboutController* about = m_delegate->about();
        QVERIFY(about);
        QStringList texts;
        for (const QLabel* label : about->findChildren<QLabel*>())
            texts.append(label->text());
        QVERIFY(
            texts.contains(u"Vexet penceresinden alan, pencere veya ekran yakala. Kısayollarını masaüstünün "
                           u"klavye ayarlarında ata; önizlemede kırp, kopyala ve kaydet."_s));
        QVERIFY(
            texts.contains(u"Görüntüler cihazında işlenir; Vexet sunucuya veri göndermez. Ekran resimlerini "
                           u"masaüstünün ekran görüntüsü kapısından ister; masaüstün ilk çekimde izin "
                           u"sorabilir. Bu tanıtım her kullanıcı için yalnızca ilk açılışta otomatik "
                           u"gösterilir."_s));
        about->close();
    }
};

QTEST_MAIN(TestWaylandNoTray)
#include "tst_wayland_notray.moc"
