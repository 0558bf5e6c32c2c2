#include "AppDelegate.h"
#include "Beeper.h"
#include "Fakes.h"
#include "Preferences.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// Commands from the command line, this start's or a later one's, reach the same dispatch as the
// status menu, with the same refusals.
class TestAppCommands : public QObject {
    Q_OBJECT

    struct Harness {
        FakeCaptureService* capture = nullptr;
        FakeVideoSide* video = nullptr;
        int videoControllersMade = 0;
        std::unique_ptr<AppDelegate> delegate;
    };

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;

    std::unique_ptr<Harness> launch()
    {
        auto harness = std::make_unique<Harness>();
        AppDelegate::Services services;
        auto capture = std::make_unique<FakeCaptureService>();
        harness->capture = capture.get();
        services.captureService = std::move(capture);
        services.hotKeys = std::make_unique<FakeHotKeys>();
        Harness* raw = harness.get();
        services.makeVideoController = [raw]() -> std::unique_ptr<VideoSideInterface> {
            auto video = std::make_unique<FakeVideoSide>();
            raw->video = video.get();
            ++raw->videoControllersMade;
            return video;
        };
        services.exitEventLoop = [] {};
        harness->delegate = std::make_unique<AppDelegate>(*m_preferences, std::move(services));
        harness->delegate->applicationDidFinishLaunching();
        return harness;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_preferences = std::make_unique<Preferences>(
            std::make_unique<QSettings>(m_dir.filePath(u"Vexet.conf"_s), QSettings::IniFormat));
        m_preferences->setHasWelcomed(true);
    }

    void cleanupTestCase() { m_preferences.reset(); }

    void everyCommandRunsAsItsMenuItemDoes()
    {
        auto h = launch();
        h->delegate->runCommand(AppCommand::capture(CaptureMode::region));
        h->delegate->runCommand(AppCommand::capture(CaptureMode::window));
        h->delegate->runCommand(AppCommand::capture(CaptureMode::screen));
        QCOMPARE(h->capture->requests,
            (QList<CaptureMode> { CaptureMode::region, CaptureMode::window, CaptureMode::screen }));

        // The same refusal as the menu's, with the beep.
        h->delegate->runCommand(AppCommand::capture(CaptureMode::video));
        QCOMPARE(h->videoControllersMade, 1);
        QCOMPARE(h->video->toggles, 1);
        h->video->isSelecting = true;
        const int beeps = Beeper::count();
        h->delegate->runCommand(AppCommand::capture(CaptureMode::screen));
        QCOMPARE(Beeper::count(), beeps + 1);
        QCOMPARE(h->capture->requests.size(), 3);
        // Video again while the window is busy toggles it, as the menu item does.
        h->delegate->runCommand(AppCommand::capture(CaptureMode::video));
        QCOMPARE(h->video->toggles, 2);
        h->video->isSelecting = false;

        QCOMPARE(h->delegate->settings(), nullptr);
        h->delegate->runCommand(AppCommand::settings());
        SettingsController* settings = h->delegate->settings();
        QVERIFY(settings && settings->isVisible());
        settings->close();

        // Plain start: reopening, which opens the settings only when no window of ours shows.
        h->delegate->openAbout();
        h->delegate->runCommand(AppCommand());
        QVERIFY(!settings->isVisible());
        h->delegate->about()->close();
        h->delegate->runCommand(AppCommand());
        QVERIFY(settings->isVisible());
        settings->close();
        QCOMPARE(h->capture->requests.size(), 3);
    }
};

QTEST_MAIN(TestAppCommands)
#include "tst_appcommands.moc"
