#include "CaptureProcess.h"

#include <QTest>

CaptureProcess::CaptureProcess(const QStringList& arguments, const QProcessEnvironment& environment)
{
    m_process.setProgram(binary());
    m_process.setArguments(arguments);
    m_process.setProcessEnvironment(environment);
}

CaptureProcess::~CaptureProcess()
{
    if (isRunning()) {
        m_process.kill();
        m_process.waitForFinished(10000);
    }
}

bool CaptureProcess::start()
{
    m_process.start();
    return m_process.waitForStarted(10000);
}

bool CaptureProcess::waitForExit(int milliseconds)
{
    const bool ended = QTest::qWaitFor([this] { return !isRunning(); }, milliseconds);
    collect();
    return ended;
}

int CaptureProcess::exitCode() const
{
    if (isRunning() || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

CaptureProcess::Outcome CaptureProcess::run(
    const QStringList& arguments, const QProcessEnvironment& environment)
{
    CaptureProcess process(arguments, environment);
    if (!process.start() || !process.waitForExit())
        return {};
    return { process.exitCode(), process.standardOutput(), process.standardError() };
}

QString CaptureProcess::binary()
{
    return QString::fromUtf8(VEXET_CAPTURE_BINARY);
}

void CaptureProcess::collect()
{
    m_output += m_process.readAllStandardOutput();
    m_error += m_process.readAllStandardError();
}
