#pragma once

#include "CapturePlan.h"
#include "Error.h"
#include "RecordingDesktopInterface.h"
#include "VideoOptions.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

// Everything a capture needs to know, worked out by the recorder before the countdown.
struct CaptureRequest {
    CaptureArea area;
    VideoOptions options;
    VideoOptions::Size frameSize;
    QString stagingPath; // created empty by the recorder
    QString microphone; // input device name; used only with options.microphone
    QString systemAudio; // the default output's monitor; empty: the sound server's own default monitor
    QString speedPreset = QStringLiteral("superfast"); // the encoder's speed preset
};

// One capture stream with its recording output, writing the staging file. It reports on the main
// thread, and never after it has been told to shut down or has been destroyed.
class CaptureSession : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Sets the capture up without capturing yet: devices are opened, the file is checked. done follows
    // later from the event loop, with nothing or what failed; the session may be destroyed in it.
    virtual void prepare(std::function<void(const std::optional<Error>&)> done) = 0;
    // Capturing begins; onStarted follows when the first data reaches the file.
    virtual std::optional<Error> start() = 0;
    // Asks the capture to end; onFinished follows once the file is complete, or onFailed.
    virtual std::optional<Error> stop() = 0;
    // Ends the capture after a failure, keeping what can be kept of the file, then calls done.
    // Nothing else is reported afterwards.
    virtual void shutDown(std::function<void()> done) = 0;
    // The length of what has been recorded so far; nothing before capture has begun.
    virtual std::optional<double> recordedSeconds() const = 0;

    std::function<void()> onStarted;
    std::function<void()> onFinished;
    std::function<void(const Error&)> onFailed;
};

using CaptureSessionFactory
    = std::function<std::unique_ptr<CaptureSession>(const CaptureRequest&, RecordingDesktopInterface&)>;
