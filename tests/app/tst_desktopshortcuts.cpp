#include "AlertCatcher.h"
#include "AppDelegate.h"
#include "DesktopTexts.h"
#include "Fakes.h"
#include "Preferences.h"
#include "StatusMenu.h"

#include <QApplication>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The application where the desktop binds the keys (its answer comes after the launch) and where
// it binds only commands: the menu shows what the desktop bound, the launch alert what it did not.
class TestDesktopShortcuts : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    FakeHotKeys* m_hotKeys = nullptr;

    std::unique_ptr<AppDelegate> launch(ShortcutBinder binder, bool settled)
    {
        AppDelegate::Services services;
        services.captureService = std::make_unique<FakeCaptureService>();
        auto hotKeys = std::make_unique<FakeHotKeys>();
        hotKeys->binderNow = binder;
        hotKeys->isSettled = settled;
        m_hotKeys = hotKeys.get();
        services.hotKeys = std::move(hotKeys);
        services.waylandSession = true;
        services.exitEventLoop = [] {};
        auto delegate = std::make_unique<AppDelegate>(*m_preferences, std::move(services));
        delegate->applicationDidFinishLaunching();
        return delegate;
    }

    // The alerts that show while fn runs and the events it leaves are handled, each closed at once.
    static QList<QStringList> alertsDuring(const std::function<void()>& fn)
    {
        AlertCatcher catcher;
        fn();
        // A launch alert is posted behind the launch; it runs (and is closed) within these passes.
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        return catcher.alerts();
    }

    QStringList menuTitles(const AppDelegate& delegate) const
    {
        QStringList titles;
        for (CaptureMode mode : CaptureModes::allCases)
            titles.append(StatusMenu::item(delegate.menu(), mode)->text());
        return titles;
    }

private Q_SLOTS:
    void init()
    {
        m_preferences = std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(u"%1.conf"_s.arg(QLatin1String(QTest::currentTestFunction()))),
            QSettings::IniFormat));
        m_preferences->setHasWelcomed(true);
    }

    void cleanup() { m_preferences.reset(); }

    void theMenuShowsWhatTheDesktopBoundOnceItAnswers()
    {
        std::unique_ptr<AppDelegate> delegate;
        QList<QStringList> alerts = alertsDuring([&] { delegate = launch(ShortcutBinder::desktop, false); });
        QVERIFY(alerts.isEmpty()); // nothing to say before the desktop answered
        QCOMPARE(menuTitles(*delegate),
            (QStringList { u"Alan seçerek yakala"_s, u"Pencere yakala"_s, u"Ekranı yakala"_s,
                u"Video kaydı başlat / durdur"_s }));

        m_hotKeys->labels = { { CaptureMode::region, u"Alt+Shift+Meta+3"_s },
            { CaptureMode::screen, u"Print"_s }, { CaptureMode::video, u"Alt+Shift+Meta+G"_s } };
        alerts = alertsDuring([this] { m_hotKeys->answer(); });
        QCOMPARE(menuTitles(*delegate),
            (QStringList { u"Alan seçerek yakala     Alt+Shift+Meta+3"_s, u"Pencere yakala"_s,
                u"Ekranı yakala     Print"_s, u"Video kaydı başlat / durdur     Alt+Shift+Meta+G"_s }));
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts[0][1], u"Kısayolları kontrol et"_s);
        QCOMPARE(alerts[0][2], DesktopTexts::unboundCommandsLead() + u"Pencere yakala"_s);

        // A later change of the desktop's binding updates the menu and says nothing more.
        m_hotKeys->labels.insert(CaptureMode::window, u"Ctrl+Print"_s);
        alerts = alertsDuring([this] { m_hotKeys->answer(); });
        QVERIFY(alerts.isEmpty());
        QCOMPARE(StatusMenu::item(delegate->menu(), CaptureMode::window)->text(),
            u"Pencere yakala     Ctrl+Print"_s);
    }

    void aDesktopThatBoundEverythingSaysNothing()
    {
        std::unique_ptr<AppDelegate> delegate;
        QList<QStringList> alerts = alertsDuring([&] { delegate = launch(ShortcutBinder::desktop, false); });
        for (CaptureMode mode : CaptureModes::allCases)
            m_hotKeys->labels.insert(mode, u"F%1"_s.arg(CaptureModes::rawValue(mode)));
        alerts += alertsDuring([this] { m_hotKeys->answer(); });
        QVERIFY(alerts.isEmpty());
        QCOMPARE(StatusMenu::item(delegate->menu(), CaptureMode::video)->text(),
            u"Video kaydı başlat / durdur     F4"_s);
    }

    void aDesktopThatBindsOnlyCommandsIsExplainedAtTheFirstLaunchOnly()
    {
        std::unique_ptr<AppDelegate> delegate;
        QList<QStringList> alerts = alertsDuring([&] { delegate = launch(ShortcutBinder::user, true); });
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts[0][1], u"Kısayolları masaüstün atar"_s);
        QCOMPARE(alerts[0][2], DesktopTexts::bindCommandsYourself());
        QCOMPARE(StatusMenu::item(delegate->menu(), CaptureMode::region)->text(), u"Alan seçerek yakala"_s);

        // The settings window offers the commands.
        delegate->openSettings();
        QVERIFY(delegate->settings() && delegate->settings()->isVisible());
        QCOMPARE(
            delegate->settings()->commandField(CaptureMode::screen)->text(), u"vexet --capture screen"_s);
        delegate->settings()->close();

        delegate.reset();
        alerts = alertsDuring([&] { delegate = launch(ShortcutBinder::user, true); });
        QVERIFY(alerts.isEmpty());
    }

    void aPortalFoundMissingAfterTheLaunchIsExplainedThenAndTheSettingsFollow()
    {
        std::unique_ptr<AppDelegate> delegate;
        QList<QStringList> alerts = alertsDuring([&] { delegate = launch(ShortcutBinder::desktop, false); });
        delegate->openSettings();
        QVERIFY(delegate->settings()->triggerLabel(CaptureMode::region));
        m_hotKeys->binderNow = ShortcutBinder::user;
        alerts += alertsDuring([this] { m_hotKeys->answer(); });
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts[0][1], u"Kısayolları masaüstün atar"_s);
        QVERIFY(delegate->settings()->commandField(CaptureMode::region));
        delegate->settings()->close();
    }
};

QTEST_MAIN(TestDesktopShortcuts)
#include "tst_desktopshortcuts.moc"
