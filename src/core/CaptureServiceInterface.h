#pragma once

#include "CaptureMode.h"
#include "Result.h"

#include <QImage>
#include <functional>
#include <optional>

// Success with an image, success without one (the user cancelled the selection), or a failure.
using CaptureResult = Result<std::optional<QImage>>;

// What the application needs from the screenshot side.
class CaptureServiceInterface {
public:
    virtual ~CaptureServiceInterface() = default;

    // A screenshot tool is running.
    virtual bool isBusy() const = 0;
    // Takes a screenshot in the given mode; completion runs later on the main thread, at most once.
    virtual void capture(CaptureMode mode, std::function<void(CaptureResult)> completion) = 0;
    // Ends a running screenshot tool without waiting for it (the application is quitting).
    virtual void terminateRunning() = 0;
};
