#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A second desktop portal for the tests that need what sway's own backends never give: a session
// bus of its own with the real xdg-desktop-portal frontend on it and, behind the frontend, the
// test backend (tests/wayland/portal). A program started with busAddress() as its
// DBUS_SESSION_BUS_ADDRESS asks this portal; it still draws on the test desktop's compositor.
//
// Two kinds:
//   PrivatePortal(response)   the test backend answers every screenshot with one response code (a
//                             refusal, a cancelled picker); nothing else is on the bus;
//   PrivatePortal(Shortcuts)  global shortcuts from the test backend (vexet-test-portal shortcuts),
//                             and everything else of the sway desktop: its wlr and gtk portal
//                             backends, so that screenshots are real pictures of the compositor,
//                             and a StatusNotifier watcher (vexet-tray-watcher) with a host, so
//                             that a program on this bus has a tray. ShortcutsPortalControl
//                             drives the shortcuts.
//
// The constructor starts everything and waits until the frontend offers its portals; whatever it
// started stops with the object, in the reverse order.
class PrivatePortal {
public:
    struct Shortcuts {
        // The shortcuts the desktop leaves without a key, as if their combination were taken.
        QStringList unboundIds;
        // CreateSession already binds the shortcuts of its "shortcuts" option, as Plasma 5.27 does
        // (which binds nothing in BindShortcuts); otherwise only BindShortcuts binds, as newer
        // desktops do.
        bool bindOnCreate = false;
    };

    explicit PrivatePortal(uint response);
    explicit PrivatePortal(const Shortcuts& shortcuts);
    ~PrivatePortal();

    bool isReady() const { return m_ready; }
    QString errorString() const { return m_error; }
    const QString& busAddress() const { return m_address; }
    // This process's own connection to the private bus.
    QDBusConnection connection() const;

private:
    bool start(uint response);
    bool startWithShortcuts(const Shortcuts& shortcuts);
    bool startBus(const QByteArray& portal);
    bool copyPortal(const QString& name);
    void launch(QProcess& process, const QString& program, const QStringList& arguments,
        const QProcessEnvironment& extra = {});
    bool awaitName(const QString& name, const QProcess& process, const QString& what);
    bool startFrontend(const QStringList& portals);
    bool fail(const QString& error);
    static void stop(QProcess& process);

    QTemporaryDir m_dir;
    QProcess m_bus;
    QProcess m_backend;
    QProcess m_wlrBackend;
    QProcess m_gtkBackend;
    QProcess m_trayWatcher;
    QProcess m_frontend;
    QProcessEnvironment m_environment;
    QString m_address;
    QString m_error;
    bool m_ready = false;
};
