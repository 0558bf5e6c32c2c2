#include "PrivatePortal.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString desktopName = u"vexettest"_s;

bool writeFile(const QString& path, const QByteArray& contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

} // namespace

PrivatePortal::PrivatePortal(uint response)
{
    m_ready = start(response);
}

PrivatePortal::~PrivatePortal()
{
    stop(m_frontend);
    stop(m_backend);
    stop(m_bus);
    QDBusConnection::disconnectFromBus(u"vexet-private-portal"_s);
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
    if (!m_dir.isValid())
        return fail(u"no temporary folder"_s);
    // A bus without service activation: only what is started here is on it.
    const QString socket = m_dir.filePath(u"bus"_s);
    const QByteArray config = "<busconfig><type>session</type><listen>unix:path=" + QFile::encodeName(socket)
        + "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
          "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";
    if (!writeFile(m_dir.filePath(u"bus.conf"_s), config) || !QDir().mkpath(m_dir.filePath(u"portals"_s))
        || !writeFile(m_dir.filePath(u"portals/vexettest.portal"_s),
            "[portal]\nDBusName=org.freedesktop.impl.portal.desktop.vexettest\n"
            "Interfaces=org.freedesktop.impl.portal.Screenshot;org.freedesktop.impl.portal.Access;\n"
            "UseIn=vexettest\n"))
        return fail(u"cannot write the configuration"_s);

    m_bus.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_bus.start(u"dbus-daemon"_s,
        { u"--nofork"_s, u"--nopidfile"_s, u"--config-file"_s, m_dir.filePath(u"bus.conf"_s) });
    if (!m_bus.waitForStarted(10000))
        return fail(u"dbus-daemon did not start"_s);
    m_address = u"unix:path="_s + socket;
    QDBusConnection bus = QDBusConnection::connectToBus(m_address, u"vexet-private-portal"_s);
    if (!QTest::qWaitFor(
            [&] {
                bus = QDBusConnection::connectToBus(m_address, u"vexet-private-portal"_s);
                if (!bus.isConnected())
                    QDBusConnection::disconnectFromBus(u"vexet-private-portal"_s);
                return bus.isConnected();
            },
            20000))
        return fail(u"the private bus does not answer"_s);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_address);
    environment.insert(u"XDG_CURRENT_DESKTOP"_s, desktopName);
    environment.insert(u"XDG_DESKTOP_PORTAL_DIR"_s, m_dir.filePath(u"portals"_s));
    m_backend.setProcessEnvironment(environment);
    m_backend.setProcessChannelMode(QProcess::ForwardedChannels);
    m_backend.start(qEnvironmentVariable("VEXET_BINARY_DIR") + u"/tests/wayland/portal/vexet-test-portal"_s,
        { QString::number(response) });
    if (!QTest::qWaitFor(
            [&] {
                return bus.interface()->isServiceRegistered(
                    u"org.freedesktop.impl.portal.desktop.vexettest"_s);
            },
            20000))
        return fail(u"the test backend did not come up"_s);

    m_frontend.setProcessEnvironment(environment);
    m_frontend.setProcessChannelMode(QProcess::ForwardedChannels);
    m_frontend.start(u"/usr/libexec/xdg-desktop-portal"_s, { u"-r"_s });
    const auto offersScreenshots = [&] {
        const QDBusMessage reply = bus.call(QDBusMessage::createMethodCall(
            u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s,
            u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s));
        return reply.type() == QDBusMessage::ReplyMessage
            && reply.arguments().value(0).toString().contains(u"org.freedesktop.portal.Screenshot"_s);
    };
    if (!QTest::qWaitFor(offersScreenshots, 20000))
        return fail(u"the portal frontend offers no screenshots"_s);
    return true;
}
