#pragma once

#include <QRect>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

// How a capture reaches the pictures of its source: a connection of its own to an X display, or a
// PipeWire stream that the desktop opened for the recording.
struct CaptureStream {
    enum class Kind { x11Display, pipeWire };
    Kind kind = Kind::x11Display;
    QString displayName; // x11Display: the display to connect to; empty for the default one
    int pipeWireRemote = -1; // pipeWire: the desktop's connection to PipeWire; it stays the desktop's
    quint32 node = 0; // pipeWire: the stream's node

    friend bool operator==(const CaptureStream&, const CaptureStream&) = default;
};

// What the recorder needs from the desktop it records: finding its source again, reaching its
// pictures, hearing when the source fails, and letting go of it afterwards. Sources are known by
// the ids of VideoTarget.
class RecordingDesktopInterface {
public:
    // Lives as long as the capture it guards.
    class ErrorWatch {
    public:
        virtual ~ErrorWatch() = default;
    };
    // Called on any thread: whether the source itself is lost (the window closed, the desktop ended
    // the stream), and the failure's description.
    using ErrorHandler = std::function<void(bool sourceLost, const QString& description)>;

    virtual ~RecordingDesktopInterface() = default;

    // How a capture of the source reaches its pictures; nothing when it is gone.
    virtual std::optional<CaptureStream> stream(quint32 sourceId) = 0;
    // Geometry of the display, in the pixels of its capture (root-window pixels on X11, the
    // stream's pixels where the desktop streams it); nothing when it is gone or shows no picture.
    virtual std::optional<QRect> displayGeometry(quint32 sourceId) = 0;
    // The same for a window; nothing when it no longer exists or is not viewable.
    virtual std::optional<QRect> windowGeometry(quint32 sourceId) = 0;
    // While the returned object lives, failures of the source (for a window: of that window) are
    // reported to the handler instead of ending the process or going unnoticed.
    virtual std::unique_ptr<ErrorWatch> watchCapture(quint32 sourceId, bool window, ErrorHandler handler) = 0;
    // Nothing more will be recorded from the source (the recording ended, failed, or the user gave up
    // before it began): whatever the desktop holds open for it is closed.
    virtual void release(quint32 sourceId) = 0;
};
