#pragma once

// The exit statuses of vexet-capture. The file exists exactly when the status is written.
enum class CaptureExitStatus : int {
    written = 0,
    // The user pressed Escape or clicked the right button.
    cancelled = 1,
    usageError = 2,
    // No X server, a grab it refused, a monitor that does not exist, pixels it did not give.
    displayFailure = 3,
    // The file could not be written.
    writeFailure = 4,
};
