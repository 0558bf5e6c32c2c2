#include "RecordCheckProcess.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;

QString RecordCheckProcess::program()
{
    return QDir(qEnvironmentVariable("VEXET_BINARY_DIR"))
        .filePath(u"tools/record-check/vexet-record-check"_s);
}

void RecordCheckProcess::start(
    const QStringList& arguments, const QStringList& wrapper, const QProcessEnvironment& environment)
{
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.setReadChannel(QProcess::StandardOutput);
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, [this] { read(); });
    QObject::connect(&m_process, &QProcess::readyReadStandardError,
        [this] { qDebug("record-check: %s", m_process.readAllStandardError().trimmed().constData()); });
    QStringList command = wrapper;
    command.append(program());
    command.append(arguments);
    m_process.start(command.first(), command.mid(1));
}

void RecordCheckProcess::read()
{
    m_pending += m_process.readAllStandardOutput();
    qsizetype end = 0;
    while ((end = m_pending.indexOf('\n')) >= 0) {
        m_lines.append(QString::fromUtf8(m_pending.left(end)));
        m_pending.remove(0, end + 1);
    }
}

bool RecordCheckProcess::waitForLine(const QString& text, int timeoutMs)
{
    return QTest::qWaitFor(
               [&] {
                   read();
                   for (const QString& line : std::as_const(m_lines)) {
                       if (line.contains(text))
                           return true;
                   }
                   return m_process.state() == QProcess::NotRunning;
               },
               timeoutMs)
        && std::any_of(
            m_lines.cbegin(), m_lines.cend(), [&](const QString& line) { return line.contains(text); });
}

bool RecordCheckProcess::waitForExit(int timeoutMs)
{
    const bool ended = QTest::qWaitFor([&] { return m_process.state() == QProcess::NotRunning; }, timeoutMs);
    read();
    return ended;
}

void RecordCheckProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished(10000);
    read();
}

QStringList RecordCheckProcess::lines() const
{
    return m_lines;
}

QString RecordCheckProcess::errorMessage() const
{
    const QString marker = u" finished error "_s;
    for (const QString& line : m_lines) {
        const qsizetype at = line.indexOf(marker);
        if (at >= 0)
            return line.mid(at + marker.size()).replace(u"\\n"_s, u"\n"_s);
    }
    return {};
}

QStringList RecordCheckProcess::statusTexts() const
{
    QStringList result;
    const QString marker = u" status "_s;
    for (const QString& line : m_lines) {
        const qsizetype at = line.indexOf(marker);
        if (at >= 0)
            result.append(line.mid(at + marker.size()));
    }
    return result;
}
