#pragma once

#include "VideoRecorder.h"

#include <QList>
#include <QPair>
#include <QStringList>
#include <functional>
#include <optional>
#include <vector>

// One recording with the real engine, watched from its callbacks: every status, the one result, and
// the recorded length at the moment of the stop.
class RecordingRun {
public:
    using Hook = std::function<void(RecorderState state, const QString& text)>;

    // Stops `seconds` after the recording has begun (negative: never by itself). The hook sees every
    // status after it has been recorded.
    RecordingRun(VideoRecorder& recorder, double seconds, Hook hook = {});

    void start(const VideoTarget& target, const VideoOptions& options, const QString& destination);
    bool waitForResult(int timeoutMs = 60000) const;

    QStringList texts() const;
    QList<RecorderState> states() const;
    bool ok() const { return results.size() == 1 && results.front().ok(); }
    QString message() const;
    // Every status so far, "state text" one after the other, to say where a run that did not end
    // got stuck.
    QString history() const;

    QList<QPair<RecorderState, QString>> statuses;
    std::vector<Result<QString>> results;
    std::optional<double> recordedAtStop;

private:
    VideoRecorder& m_recorder;
    double m_seconds;
    Hook m_hook;
    bool m_stopScheduled = false;
};
