#include "AlertCatcher.h"
#include "AppDelegate.h"
#include "CaptureService.h"
#include "DesktopTexts.h"
#include "HotKeys.h"
#include "PatternDesktop.h"
#include "PortalGlobalKeys.h"
#include "Preferences.h"
#include "PrivatePortal.h"
#include "ShortcutsPortalControl.h"
#include "StatusMenu.h"
#include "WaylandInput.h"
#include "WaylandPointerScreen.h"
#include "WaylandScreenCapturePermission.h"

#include <QApplication>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The program's shortcuts on the Wayland test desktop: through the real portal frontend with the
// test GlobalShortcuts backend behind it (and sway's own backends for the pictures), and on sway's
// own portal, which offers no shortcuts.
class TestWaylandShortcuts : public QObject {
    Q_OBJECT

    static constexpr int timeoutMs = 30000;

    WaylandScreenCapturePermission m_permission;
    WaylandPointerScreen m_pointer;
    PatternDesktop m_patterns;
    WaylandInput m_input;
    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    const QByteArray m_desktopBus = qgetenv("DBUS_SESSION_BUS_ADDRESS");

    // The application as main() joins it on Wayland, its shortcuts on the given bus.
    struct App {
        std::unique_ptr<PortalGlobalKeys> keys;
        HotKeys* hotKeys = nullptr;
        std::unique_ptr<AppDelegate> delegate;
    };

    App launch(const QDBusConnection& bus)
    {
        App app;
        app.keys = std::make_unique<PortalGlobalKeys>(bus);
        AppDelegate::Services services;
        services.captureService = std::make_unique<CaptureService>(
            m_permission, m_pointer, qEnvironmentVariable("VEXET_BINARY_DIR") + u"/src/app/vexet-capture"_s);
        auto hotKeys = std::make_unique<HotKeys>(*app.keys, *m_preferences);
        app.hotKeys = hotKeys.get();
        services.hotKeys = std::move(hotKeys);
        services.waylandSession = true;
        services.exitEventLoop = [] {};
        app.delegate = std::make_unique<AppDelegate>(*m_preferences, std::move(services));
        app.delegate->applicationDidFinishLaunching();
        return app;
    }

    // Waits for the desktop's answer to the launch, and for the alert that may follow it.
    static bool settle(const App& app, const AlertCatcher& alerts, qsizetype expectedAlerts)
    {
        return QTest::qWaitFor([&] { return app.hotKeys->settled(); }, timeoutMs)
            && QTest::qWaitFor([&] { return alerts.alerts().size() >= expectedAlerts; }, timeoutMs)
            && (QCoreApplication::processEvents(), alerts.alerts().size() == expectedAlerts);
    }

    static QString menuTitle(const App& app, CaptureMode mode)
    {
        return StatusMenu::item(app.delegate->menu(), mode)->text();
    }

    static QRect secondRect() { return QGuiApplication::screens().at(1)->geometry(); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_input.isReady(), qPrintable(m_input.errorString()));
        // This process's own session bus stays the desktop's (its tray icon is there).
        QVERIFY(QDBusConnection::sessionBus().isConnected());
    }

    void init()
    {
        m_preferences = std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(u"%1.conf"_s.arg(QLatin1String(QTest::currentTestFunction()))),
            QSettings::IniFormat));
        m_preferences->setHasWelcomed(true);
    }

    void cleanup()
    {
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_desktopBus);
        m_preferences.reset();
    }

    void theDesktopBindsTheStoredCombinationsAndTheProgramShowsWhatItBound()
    {
        PrivatePortal portal(PrivatePortal::Shortcuts { { u"video"_s } });
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        ShortcutsPortalControl control(portal.connection());
        AlertCatcher alerts;
        const App app = launch(portal.connection());
        QVERIFY(settle(app, alerts, 1));
        QCOMPARE(app.hotKeys->binder(), ShortcutBinder::desktop);
        QCOMPARE(alerts.alerts()[0][1], u"Kısayolları kontrol et"_s);
        QCOMPARE(
            alerts.alerts()[0][2], DesktopTexts::unboundCommandsLead() + u"Video kaydı başlat / durdur"_s);

        // Asked for with the stored combinations, the menu's titles and stable ids, also in the
        // session's options for the desktops that read them only there.
        const std::optional<QJsonObject> received = control.received();
        QVERIFY2(received, qPrintable(control.errorString()));
        const QJsonArray expected {
            QJsonObject { { u"id"_s, u"region"_s }, { u"description"_s, u"Alan seçerek yakala"_s },
                { u"preferredTrigger"_s, u"ALT+SHIFT+LOGO+3"_s } },
            QJsonObject { { u"id"_s, u"window"_s }, { u"description"_s, u"Pencere yakala"_s },
                { u"preferredTrigger"_s, u"ALT+SHIFT+LOGO+4"_s } },
            QJsonObject { { u"id"_s, u"screen"_s }, { u"description"_s, u"Ekranı yakala"_s },
                { u"preferredTrigger"_s, u"ALT+SHIFT+LOGO+5"_s } },
            QJsonObject { { u"id"_s, u"video"_s }, { u"description"_s, u"Video kaydı başlat / durdur"_s },
                { u"preferredTrigger"_s, u"ALT+SHIFT+LOGO+g"_s } },
        };
        QCOMPARE(received->value(u"bound"_s).toArray(), expected);
        QCOMPARE(received->value(u"createShortcuts"_s).toArray(), expected);
        QCOMPARE(received->value(u"bindCalls"_s).toInt(), 1);
        QCOMPARE(received->value(u"openSessions"_s).toInt(), 1);

        // The menu shows the desktop's own words for its keys; the command it left unbound, none.
        QCOMPARE(menuTitle(app, CaptureMode::region), u"Alan seçerek yakala     Alt+Shift+Meta+3"_s);
        QCOMPARE(menuTitle(app, CaptureMode::screen), u"Ekranı yakala     Alt+Shift+Meta+5"_s);
        QCOMPARE(menuTitle(app, CaptureMode::video), u"Video kaydı başlat / durdur"_s);

        // The settings window shows the same; this portal (version 1) has no way to open the
        // desktop's own settings, so a sentence names the place.
        app.delegate->openSettings();
        SettingsController* settings = app.delegate->settings();
        QVERIFY(settings && QTest::qWaitForWindowExposed(settings));
        QCOMPARE(settings->triggerLabel(CaptureMode::window)->text(), u"Alt+Shift+Meta+4"_s);
        QCOMPARE(settings->triggerLabel(CaptureMode::video)->text(), u"Atanmamış"_s);
        QCOMPARE(settings->configureButton(), nullptr);
        QCOMPARE(settings->recorder(CaptureMode::region), nullptr);

        // The user gives a command another key in the desktop's settings: shown at once.
        QVERIFY2(control.setTrigger(u"region"_s, u"Print"_s), qPrintable(control.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(
            menuTitle(app, CaptureMode::region), u"Alan seçerek yakala     Print"_s, timeoutMs);
        QCOMPARE(settings->triggerLabel(CaptureMode::region)->text(), u"Print"_s);
        QVERIFY2(control.setTrigger(u"video"_s, u"Ctrl+Alt+R"_s), qPrintable(control.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(
            settings->triggerLabel(CaptureMode::video)->text(), u"Ctrl+Alt+R"_s, timeoutMs);
        QCOMPARE(alerts.alerts().size(), 1);
        settings->close();
    }

    void aDesktopThatBindsAtTheSessionsCreationIsReadThere()
    {
        // Plasma 5.27 takes the shortcuts from the creation options and binds nothing later.
        PrivatePortal portal(PrivatePortal::Shortcuts { { u"window"_s }, true });
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        AlertCatcher alerts;
        const App app = launch(portal.connection());
        QVERIFY(settle(app, alerts, 1));
        QCOMPARE(menuTitle(app, CaptureMode::region), u"Alan seçerek yakala     Alt+Shift+Meta+3"_s);
        QCOMPARE(menuTitle(app, CaptureMode::window), u"Pencere yakala"_s);
        QCOMPARE(alerts.alerts()[0][2], DesktopTexts::unboundCommandsLead() + u"Pencere yakala"_s);
    }

    void anActivationTakesTheMonitorUnderThePointer()
    {
        PrivatePortal portal(PrivatePortal::Shortcuts {});
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        ShortcutsPortalControl control(portal.connection());
        AlertCatcher alerts;
        const App app = launch(portal.connection());
        QVERIFY(settle(app, alerts, 0));
        // The capture helper asks the same portal for its picture.
        qputenv("DBUS_SESSION_BUS_ADDRESS", portal.busAddress().toUtf8());

        QVERIFY(m_patterns.show());
        const QPoint pointer(400, 600);
        QVERIFY(m_input.move(secondRect().topLeft() + pointer - QPoint(10, 10)));
        QVERIFY(m_input.move(secondRect().topLeft() + pointer));
        const QImage shown = m_patterns.expected(1);
        QVERIFY2(control.activate(u"screen"_s), qPrintable(control.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(app.delegate->editors().size(), 1, timeoutMs);
        m_patterns.hide();
        EditorController* editor = app.delegate->editors().cbegin().value();
        QCOMPARE(editor->original().size(), QSize(1280, 1024));
        QVERIFY(editor->statusLabel()->text().startsWith(u"1280 × 1024 piksel"_s));
        QVERIFY(PatternDesktop::equalBesidesPointer(
            editor->original().convertToFormat(QImage::Format_RGB32), shown, pointer));
        QVERIFY(alerts.alerts().isEmpty());
        editor->close();
        QTRY_COMPARE_WITH_TIMEOUT(app.delegate->editors().size(), 0, timeoutMs);

        // An id the program never asked for starts nothing.
        QVERIFY(!control.activate(u"unknown"_s));
    }

    void withoutTheDesktopsShortcutsTheCommandsAreTheWay()
    {
        // sway's portal offers no GlobalShortcuts.
        AlertCatcher alerts;
        std::optional<App> app = launch(QDBusConnection::sessionBus());
        QVERIFY(settle(*app, alerts, 1));
        QCOMPARE(app->hotKeys->binder(), ShortcutBinder::user);
        QCOMPARE(alerts.alerts()[0][1], u"Kısayolları masaüstün atar"_s);
        QCOMPARE(alerts.alerts()[0][2], DesktopTexts::bindCommandsYourself());
        QCOMPARE(menuTitle(*app, CaptureMode::region), u"Alan seçerek yakala"_s);

        // The settings window offers each command, copied with a real click for other programs.
        app->delegate->openSettings();
        SettingsController* settings = app->delegate->settings();
        QVERIFY(settings && QTest::qWaitForWindowExposed(settings));
        QCOMPARE(settings->commandField(CaptureMode::screen)->text(), u"vexet --capture screen"_s);
        std::optional<SwayIpc::Window> window = m_patterns.sway().waitForWindow(
            QCoreApplication::applicationPid(), u"Vexet — Ayarlar"_s, timeoutMs);
        QVERIFY(window);
        const QPushButton* copy = settings->commandCopyButton(CaptureMode::window);
        const QPoint onCopy = window->rect.topLeft() + copy->mapTo(settings, copy->rect().center());
        QVERIFY(m_input.move(onCopy - QPoint(5, 5)));
        QVERIFY(m_input.move(onCopy));
        QTRY_VERIFY_WITH_TIMEOUT(copy->underMouse(), timeoutMs);
        QVERIFY(m_input.click(onCopy));
        // This process serves the text, so the event loop runs while another program reads it.
        QString pasted;
        QVERIFY(QTest::qWaitFor(
            [&] {
                QProcess paste;
                paste.start(u"wl-paste"_s, { u"--no-newline"_s, u"--type"_s, u"text/plain"_s });
                if (!QTest::qWaitFor([&paste] { return paste.state() == QProcess::NotRunning; }, 10000))
                    return false;
                pasted = QString::fromUtf8(paste.readAllStandardOutput());
                return pasted == u"vexet --capture window"_s;
            },
            timeoutMs));
        settings->close();

        // Said once: the next start says nothing.
        app.reset();
        AlertCatcher later;
        app = launch(QDBusConnection::sessionBus());
        QVERIFY(settle(*app, later, 0));
    }
};

QTEST_MAIN(TestWaylandShortcuts)
#include "tst_wayland_shortcuts.moc"
