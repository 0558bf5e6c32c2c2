#include "PrivatePortal.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString desktopName = u"vexettest"_s;
const QString connectionName = u"vexet-private-portal"_s;
const QString testBackendName = u"org.freedesktop.impl.portal.desktop.vexettest"_s;
constexpr int startTimeoutMs = 20000;

bool writeFile(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

QByteArray testPortal(const QStringList& interfaces)
{
    return "[portal]\nDBusName=" + testBackendName.toUtf8() + "\nInterfaces=" + interfaces.join(u';').toUtf8()
        + ";\nUseIn=" + desktopName.toUtf8() + "\n";
}

} // namespace

PrivatePortal::PrivatePortal(uint response)
{
    m_ready = start(response);
}

PrivatePortal::PrivatePortal(const Shortcuts& shortcuts)
{
    m_ready = startWithShortcuts(shortcuts);
}

PrivatePortal::~PrivatePortal()
{
    stop(m_frontend);
    stop(m_trayWatcher);
    stop(m_gtkBackend);
    stop(m_wlrBackend);
    stop(m_backend);
    stop(m_bus);
    QDBusConnection::disconnectFromBus(connectionName);
}

QDBusConnection PrivatePortal::connection() const
{
    return QDBusConnection(connectionName);
}

bool PrivatePortal::fail(const QString& error)
{
    m_error = error;
    return false;
}

void PrivatePortal::stop(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

bool PrivatePortal::start(uint response)
{
    if (!startBus(testPortal(
            { u"org.freedesktop.impl.portal.Screenshot"_s, u"org.freedesktop.impl.portal.Access"_s })))
        return false;
    launch(m_backend, qEnvironmentVariable("VEXET_BINARY_DIR") + u"/tests/wayland/portal/vexet-test-portal"_s,
        { QString::number(response) });
    return awaitName(testBackendName, m_backend, u"the test backend"_s)
        && startFrontend({ u"org.freedesktop.portal.Screenshot"_s });
}

bool PrivatePortal::startWithShortcuts(const Shortcuts& shortcuts)
{
    if (!startBus(testPortal({ u"org.freedesktop.impl.portal.GlobalShortcuts"_s })) || !copyPortal(u"wlr"_s)
        || !copyPortal(u"gtk"_s))
        return false;
    QStringList arguments { u"shortcuts"_s };
    for (const QString& id : shortcuts.unboundIds)
        arguments << u"--unbound"_s << id;
    if (shortcuts.bindOnCreate)
        arguments << u"--bind-on-create"_s;
    const QString binaries = qEnvironmentVariable("VEXET_BINARY_DIR");
    launch(m_backend, binaries + u"/tests/wayland/portal/vexet-test-portal"_s, arguments);

    // The wlr backend finds the desktop's stand-in slurp first, as the desktop's own one does.
    QProcessEnvironment wlr;
    const QString standIns = qEnvironmentVariable("VEXET_DESKTOP_DIR") + u"/bin"_s;
    if (qEnvironmentVariableIsSet("VEXET_DESKTOP_DIR") && QFile::exists(standIns))
        wlr.insert(u"PATH"_s, standIns + u':' + qEnvironmentVariable("PATH"));
    launch(m_wlrBackend, u"/usr/libexec/xdg-desktop-portal-wlr"_s, { u"--loglevel=WARN"_s }, wlr);
    // Without a backend that implements Access the frontend offers no Screenshot portal.
    QProcessEnvironment gtk;
    gtk.insert(u"GDK_BACKEND"_s, u"wayland"_s);
    gtk.insert(u"NO_AT_BRIDGE"_s, u"1"_s);
    launch(m_gtkBackend, u"/usr/libexec/xdg-desktop-portal-gtk"_s, { u"--replace"_s }, gtk);
    launch(m_trayWatcher, binaries + u"/tests/wayland/tray/vexet-tray-watcher"_s, {});

    return awaitName(testBackendName, m_backend, u"the test backend"_s)
        && awaitName(u"org.freedesktop.impl.portal.desktop.wlr"_s, m_wlrBackend, u"the wlr portal backend"_s)
        && awaitName(u"org.freedesktop.impl.portal.desktop.gtk"_s, m_gtkBackend, u"the gtk portal backend"_s)
        && awaitName(u"org.kde.StatusNotifierWatcher"_s, m_trayWatcher, u"the tray watcher"_s)
        && startFrontend(
            { u"org.freedesktop.portal.GlobalShortcuts"_s, u"org.freedesktop.portal.Screenshot"_s });
}

// The bus, with the portal files the frontend is to read: a bus without service activation, so
// that only what is started here is on it.
bool PrivatePortal::startBus(const QByteArray& portal)
{
    if (!m_dir.isValid())
        return fail(u"no temporary folder"_s);
    const QString socket = m_dir.filePath(u"bus"_s);
    const QByteArray config = "<busconfig><type>session</type><listen>unix:path=" + QFile::encodeName(socket)
        + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
          "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";
    if (!writeFile(m_dir.filePath(u"bus.conf"_s), config) || !QDir().mkpath(m_dir.filePath(u"portals"_s))
        || !writeFile(m_dir.filePath(u"portals/vexettest.portal"_s), portal))
        return fail(u"cannot write the configuration"_s);

    m_bus.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_bus.start(u"dbus-daemon"_s,
        { u"--nofork"_s, u"--nopidfile"_s, u"--config-file"_s, m_dir.filePath(u"bus.conf"_s) });
    if (!m_bus.waitForStarted(10000))
        return fail(u"dbus-daemon did not start"_s);
    m_address = u"unix:path="_s + socket;
    if (!QTest::qWaitFor(
            [&] {
                const QDBusConnection bus = QDBusConnection::connectToBus(m_address, connectionName);
                if (!bus.isConnected())
                    QDBusConnection::disconnectFromBus(connectionName);
                return bus.isConnected();
            },
            startTimeoutMs))
        return fail(u"the private bus does not answer"_s);

    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_address);
    m_environment.insert(u"XDG_CURRENT_DESKTOP"_s, desktopName);
    m_environment.insert(u"XDG_DESKTOP_PORTAL_DIR"_s, m_dir.filePath(u"portals"_s));
    return true;
}

// One of the machine's portal files, made to apply to this portal's desktop.
bool PrivatePortal::copyPortal(const QString& name)
{
    const QString fileName = name + u".portal"_s;
    QFile installed(u"/usr/share/xdg-desktop-portal/portals/"_s + fileName);
    if (!installed.open(QIODevice::ReadOnly))
        return fail(u"cannot read %1: %2"_s.arg(installed.fileName(), installed.errorString()));
    QByteArrayList lines = installed.readAll().split('\n');
    for (QByteArray& line : lines) {
        if (line.startsWith("UseIn="))
            line = "UseIn=" + desktopName.toUtf8() + ';';
    }
    if (!writeFile(m_dir.filePath(u"portals/"_s + fileName), lines.join('\n')))
        return fail(u"cannot write %1"_s.arg(fileName));
    return true;
}

void PrivatePortal::launch(
    QProcess& process, const QString& program, const QStringList& arguments, const QProcessEnvironment& extra)
{
    QProcessEnvironment environment = m_environment;
    environment.insert(extra);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
}

bool PrivatePortal::awaitName(const QString& name, const QProcess& process, const QString& what)
{
    const QDBusConnection bus = connection();
    const auto registered = [&] { return bus.interface()->isServiceRegistered(name).value(); };
    if (QTest::qWaitFor(
            [&] { return process.state() == QProcess::NotRunning || registered(); }, startTimeoutMs)
        && registered())
        return true;
    if (process.state() == QProcess::NotRunning)
        return fail(u"%1 (%2) did not come up: %3"_s.arg(what, process.program(), process.errorString()));
    return fail(u"%1 did not take the name %2"_s.arg(what, name));
}

// The frontend, last: it offers only the portals whose backends it finds on the bus.
bool PrivatePortal::startFrontend(const QStringList& portals)
{
    launch(m_frontend, u"/usr/libexec/xdg-desktop-portal"_s, { u"-r"_s });
    const QDBusConnection bus = connection();
    QStringList missing = portals;
    const auto offersAll = [&] {
        const QDBusMessage reply = bus.call(QDBusMessage::createMethodCall(
            u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s,
            u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s));
        if (reply.type() != QDBusMessage::ReplyMessage)
            return false;
        const QString interfaces = reply.arguments().value(0).toString();
        missing.removeIf([&](const QString& portal) {
            return interfaces.contains(u"<interface name=\"%1\">"_s.arg(portal));
        });
        return missing.isEmpty();
    };
    if (QTest::qWaitFor(
            [&] { return m_frontend.state() == QProcess::NotRunning || offersAll(); }, startTimeoutMs)
        && missing.isEmpty())
        return true;
    if (m_frontend.state() == QProcess::NotRunning)
        return fail(u"the portal frontend did not come up: %1"_s.arg(m_frontend.errorString()));
    return fail(u"the portal frontend does not offer %1"_s.arg(missing.join(u", "_s)));
}
