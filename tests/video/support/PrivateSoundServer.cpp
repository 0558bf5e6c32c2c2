#include "PrivateSoundServer.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

PrivateSoundServer::PrivateSoundServer(const QString& folder)
    : m_folder(folder)
{
}

PrivateSoundServer::~PrivateSoundServer()
{
    kill();
}

bool PrivateSoundServer::start()
{
    const QString runtime = m_folder + u"/runtime"_s;
    if (!QDir().mkpath(runtime)
        || !QFile::setPermissions(
            runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner))
        return false;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, m_folder);
    environment.insert(u"PULSE_RUNTIME_PATH"_s, runtime);
    environment.insert(u"PULSE_STATE_PATH"_s, m_folder);
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent"_s);
    m_server.setProcessEnvironment(environment);
    m_server.setStandardOutputFile(QProcess::nullDevice());
    m_server.setStandardErrorFile(QProcess::nullDevice());
    const QString socket = m_folder + u"/native"_s;
    m_server.start(u"pulseaudio"_s,
        { u"--daemonize=no"_s, u"--system=no"_s, u"--exit-idle-time=-1"_s, u"-n"_s, u"--use-pid-file=no"_s,
            u"--load=module-native-protocol-unix socket=%1 auth-anonymous=1"_s.arg(socket),
            u"--load=module-null-sink sink_name=vexet_private_speaker"_s });
    return m_server.waitForStarted() && QTest::qWaitFor([&] { return QFile::exists(socket); }, 10000);
}

void PrivateSoundServer::kill()
{
    if (m_server.state() == QProcess::NotRunning)
        return;
    m_server.kill();
    m_server.waitForFinished();
}

QProcessEnvironment PrivateSoundServer::clientEnvironment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PULSE_SERVER"_s, u"unix:"_s + m_folder + u"/native"_s);
    return environment;
}
