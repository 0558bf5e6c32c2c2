#include "VexetProcess.h"

#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

VexetProcess::VexetProcess(const QString& configHome)
    : m_configHome(configHome)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, configHome);
    m_process.setProcessEnvironment(environment);
    m_process.setProgram(binary());
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
}

VexetProcess::~VexetProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(10000);
    }
}

bool VexetProcess::start()
{
    m_process.start();
    return m_process.waitForStarted(10000);
}

bool VexetProcess::terminateAndWait(int* exitCode)
{
    m_process.terminate();
    if (!m_process.waitForFinished(30000))
        return false;
    if (exitCode)
        *exitCode = m_process.exitCode();
    return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

bool VexetProcess::startAgainAndWait()
{
    QProcess second;
    second.setProcessEnvironment(m_process.processEnvironment());
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    second.start(binary(), {});
    return second.waitForFinished(30000) && second.exitStatus() == QProcess::NormalExit
        && second.exitCode() == 0;
}

QString VexetProcess::binary()
{
    const QString dir = qEnvironmentVariable("VEXET_BINARY_DIR", QString::fromUtf8(VEXET_DEFAULT_BINARY_DIR));
    return dir + u"/src/app/vexet"_s;
}
