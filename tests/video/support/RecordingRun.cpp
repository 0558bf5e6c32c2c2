#include "RecordingRun.h"

#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

RecordingRun::RecordingRun(VideoRecorder& recorder, double seconds, Hook hook)
    : m_recorder(recorder)
    , m_seconds(seconds)
    , m_hook(std::move(hook))
{
    m_recorder.onStatus = [this](RecorderState state, const QString& text) {
        statuses.append({ state, text });
        if (state == RecorderState::Recording && !m_stopScheduled && m_seconds >= 0) {
            m_stopScheduled = true;
            // A coarse timer may fire up to a twentieth of its time early: the recording would be short.
            QTimer::singleShot(static_cast<int>(m_seconds * 1000), Qt::PreciseTimer, &m_recorder, [this] {
                recordedAtStop = m_recorder.recordedSeconds();
                m_recorder.stop();
            });
        }
        if (m_hook)
            m_hook(state, text);
    };
    m_recorder.onFinish = [this](const Result<QString>& result) { results.push_back(result); };
}

void RecordingRun::start(const VideoTarget& target, const VideoOptions& options, const QString& destination)
{
    m_recorder.start(target, options, destination);
}

bool RecordingRun::waitForResult(int timeoutMs) const
{
    return QTest::qWaitFor([this] { return !results.empty(); }, timeoutMs);
}

QStringList RecordingRun::texts() const
{
    QStringList result;
    for (const auto& status : statuses)
        result.append(status.second);
    return result;
}

QList<RecorderState> RecordingRun::states() const
{
    QList<RecorderState> result;
    for (const auto& status : statuses)
        result.append(status.first);
    return result;
}

QString RecordingRun::message() const
{
    if (results.empty() || results.front().ok())
        return {};
    return results.front().error().localizedDescription();
}

QString RecordingRun::history() const
{
    QStringList lines;
    for (const auto& [state, text] : statuses)
        lines.append(u"%1 %2"_s.arg(static_cast<int>(state)).arg(text));
    return lines.join(u", "_s);
}
