#pragma once

#include "RecordingDesktopInterface.h"
#include "Result.h"
#include "VideoTarget.h"

#include <QRect>
#include <QSizeF>

// Where a recording takes its pictures from, found again on the desktop just before it starts.
struct CaptureArea {
    QRect rootRect; // the root-window pixels to capture; for a window, where it is now
    quint32 windowId = 0; // the window to capture; 0 for a display or a region
    QSizeF sourcePixels; // the size the frame size is computed from

    friend bool operator==(const CaptureArea&, const CaptureArea&) = default;
};

class CapturePlan {
public:
    // The target as it is now: a display that is gone, a window that is closed or hidden, or a
    // region whose part inside its display is too small is an error with the user's message.
    static Result<CaptureArea> resolve(const VideoTarget& target, RecordingDesktopInterface& desktop);
};
