#pragma once

#include <QString>
#include <functional>

// What the application needs from the recording window and its recorder.
class VideoSideInterface {
public:
    virtual ~VideoSideInterface() = default;

    // Opens or closes the recording window, or stops a running recording.
    virtual void toggle() = 0;

    // The recorder is at rest (no countdown, recording or finishing under way).
    virtual bool recorderIdle() const = 0;
    virtual bool selecting() const = 0;
    virtual bool sheetOpen() const = 0;
    virtual bool loading() const = 0;

    // The application waits for the recording to end before it quits.
    virtual void setPendingQuit(bool pending) = 0;
    virtual void stopRecorder() = 0;

    // Busy flag and status text ("3…", "00:12", …) whenever the recorder's state changes.
    std::function<void(bool busy, const QString& text)> onStatus;
    // A deferred quit may now go ahead (true) or not.
    std::function<void(bool quit)> onTerminateReply;
};
