#pragma once

#include "CaptureSession.h"
#include "RecorderState.h"
#include "RecordingDesktopInterface.h"
#include "Result.h"
#include "VideoOptions.h"
#include "VideoTarget.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

// The screen-recording engine: counts down, records one target into a hidden staging file beside the
// destination, finishes the file (VideoFile) and moves it onto the destination, and rescues whatever
// was recorded when something fails.
//
// It runs on the main thread and never makes it wait: the sound devices are looked up, the capture
// is set up and the file finished on other threads, which report back. onStatus is called with
// every change of state or elapsed time; onFinish exactly once per recording, with the destination
// or an error whose description is the whole message for the user (RecordingCancellation when the
// user cancelled during the countdown).
class VideoRecorder : public QObject {
    Q_OBJECT

public:
    // What the recorder uses to capture and finish; replaceable in tests.
    struct Backend {
        CaptureSessionFactory createSession;
        std::function<std::optional<QString>()> defaultMicrophone;
        std::function<Result<QString>(const QString&)> finishAudio;
        std::function<std::optional<QString>()> defaultOutputMonitor
            = [] { return std::optional<QString>(); };
    };
    static Backend gstreamer();

    explicit VideoRecorder(RecordingDesktopInterface& desktop, QObject* parent = nullptr);
    VideoRecorder(RecordingDesktopInterface& desktop, Backend backend, QObject* parent = nullptr);
    ~VideoRecorder() override;

    RecorderState state() const { return m_state; }

    // Begins a recording; ignored unless idle. Returns at once.
    void start(const VideoTarget& target, const VideoOptions& options, const QString& destination);
    // Asks the current recording to end: cancels a countdown, stops a capture, does nothing later on.
    void stop();

    // The user gave up on a target before recording it: the desktop lets go of its source. The
    // recorder lets go of the source of each recording itself when the recording ends.
    void release(const VideoTarget& target);

    // The length recorded so far by the current capture, when it is known.
    std::optional<double> recordedSeconds() const;

    std::function<void(RecorderState state, const QString& text)> onStatus;
    std::function<void(const Result<QString>& result)> onFinish;

private:
    void report(RecorderState state, const QString& text);
    void runStart(quint64 task, const VideoTarget& target, const VideoOptions& options);
    std::optional<Error> prepareCapture(quint64 task, const VideoTarget& target, const VideoOptions& options,
        const Result<CaptureRequest>& devices);
    void countdown(quint64 task, int secondsLeft);
    void beginCapture(quint64 task);
    bool cancelled(quint64 task) const;
    void startFailed(const Error& error);
    void outputStarted(CaptureSession* session);
    void outputFinished(CaptureSession* session);
    void tick();
    void failAfterStopping(const Error& error);
    void saveRecording();
    void completeSave(const Result<QString>& finished);
    void finish(Result<QString> result);
    Result<QString> rescueStaging(const Result<QString>& result);
    void dropSession();

    RecordingDesktopInterface& m_desktop;
    Backend m_backend;
    RecorderState m_state = RecorderState::Idle;
    std::unique_ptr<CaptureSession> m_session;
    std::optional<quint32> m_source; // of the current recording's target
    std::optional<QString> m_destination;
    std::optional<QString> m_staging;
    QTimer m_timer;
    bool m_finishing = false;
    std::optional<Error> m_failure;
    std::optional<quint64> m_startTask;
    bool m_startCancelled = false;
    quint64 m_tasks = 0;
    QElapsedTimer m_startedAt;
    std::optional<double> m_recordedAtStart;
};
