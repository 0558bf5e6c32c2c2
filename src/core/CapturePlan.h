#pragma once

#include "RecordingDesktopInterface.h"
#include "Result.h"
#include "VideoTarget.h"

#include <QRect>
#include <QSizeF>

// Where a recording takes its pictures from, found again on the desktop just before it starts.
struct CaptureArea {
    CaptureStream stream;
    quint32 sourceId = 0;
    bool window = false; // the whole of a window, wherever it is
    QRect rect; // the pixels to capture, in the capture's pixels; for a window, where it is now
    QRect bounds; // the display or window the rectangle lies in, in the same pixels
    QSizeF sourcePixels; // the size the frame size is computed from

    friend bool operator==(const CaptureArea&, const CaptureArea&) = default;
};

class CapturePlan {
public:
    // The target as it is now: a display that is gone, a window that is closed or hidden, or a
    // region whose part inside its display is too small is an error with the user's message.
    static Result<CaptureArea> resolve(const VideoTarget& target, RecordingDesktopInterface& desktop);
};
