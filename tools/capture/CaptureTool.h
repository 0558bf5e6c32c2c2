#pragma once

#include "CaptureRequest.h"
#include "CaptureToolProtocol.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QImage>
#include <QString>
#include <memory>
#include <optional>

// One run of vexet-capture: the picture through the X server, or through the desktop portal when
// the session is Wayland (WAYLAND_DISPLAY set, also when XWayland's DISPLAY is set too: XWayland's
// picture lacks every native window). Also the pieces both ways share.
class CaptureTool {
public:
    // The exit status; a failure has been told on standard error in one line.
    static CaptureExitStatus run(const CaptureRequest& request);

    // Tells the reason on standard error and returns the status.
    static CaptureExitStatus fail(CaptureExitStatus status, const QString& reason);
    // Writes the picture to the request's file: written, or a write failure told.
    static CaptureExitStatus write(const QImage& image, const CaptureRequest& request);
    // The failure text for a monitor number the desktop does not have.
    static QString noSuchMonitor(qsizetype number, qsizetype count);

    // The Qt application of the interactive parts, with none of our options taken for Qt's.
    static std::unique_ptr<QGuiApplication> makeApplication();

    // Starts a flow that ends with finished(status, reason) and runs the event loop until then.
    template <typename Flow> static CaptureExitStatus runUntilFinished(Flow& flow)
    {
        std::optional<CaptureExitStatus> status;
        QEventLoop loop;
        QObject::connect(&flow, &Flow::finished, &loop, [&](CaptureExitStatus result, const QString& reason) {
            status = result;
            if (!reason.isEmpty())
                fail(result, reason);
            loop.quit();
        });
        flow.start();
        // A flow may end before the loop runs (a request it refuses at once).
        if (!status)
            loop.exec();
        return status.value_or(CaptureExitStatus::cancelled);
    }
};
