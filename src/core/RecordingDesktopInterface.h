#pragma once

#include <QRect>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

// What the recorder needs from the desktop it records: finding its target again, and keeping an
// error of the capture's own display connection from ending the program.
class RecordingDesktopInterface {
public:
    // Lives as long as the capture it guards.
    class ErrorWatch {
    public:
        virtual ~ErrorWatch() = default;
    };
    // Called on the thread whose display call failed: whether the error concerns the watched window
    // (it has gone), and the error's description.
    using ErrorHandler = std::function<void(bool windowLost, const QString& description)>;

    virtual ~RecordingDesktopInterface() = default;

    // The display name the capture connects to (empty: the default display).
    virtual QString displayName() const = 0;
    // Geometry in root-window pixels of the monitor with that RandR output id; nothing when the
    // output is no longer connected or shows no picture.
    virtual std::optional<QRect> displayGeometry(quint32 outputId) = 0;
    // Geometry in root-window pixels of the window; nothing when it no longer exists or is not viewable.
    virtual std::optional<QRect> windowGeometry(quint32 windowId) = 0;
    // While the returned object lives, display errors are reported to the handler instead of ending
    // the process. windowId 0 watches no particular window.
    virtual std::unique_ptr<ErrorWatch> watchCaptureErrors(quint32 windowId, ErrorHandler handler) = 0;
};
