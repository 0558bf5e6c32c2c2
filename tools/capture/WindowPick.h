#pragma once

#include "CaptureRequest.h"
#include "CaptureToolProtocol.h"
#include "FramePicker.h"
#include "InputGrab.h"
#include "RegionSelectionWindow.h"

#include <QObject>
#include <optional>

// The window mode of vexet-capture on X11: the frozen desktop in one unmanaged window over the root
// window, the keyboard and pointer taken; the window under the pointer is lit and a click on it
// takes it with its frame. Escape or the right button cancels. Ends with finished(); the file is
// written by then.
class WindowPick : public QObject {
    Q_OBJECT

public:
    // frozen: the whole root window; frames: the managed windows' frames, bottom to top, in root
    // coordinates.
    WindowPick(const CaptureRequest& request, const QImage& frozen, const QList<QRect>& frames);

    void start();

Q_SIGNALS:
    // reason: empty unless the status is a failure.
    void finished(CaptureExitStatus status, const QString& reason);

private:
    void onPointerMoved(const QPointF& position);
    void onPressed(Qt::MouseButton button, const QPointF& position);
    void onReleased(Qt::MouseButton button, const QPointF& position);
    void take(const QRect& rect);
    void end(CaptureExitStatus status, const QString& reason = {});

    CaptureRequest m_request;
    FramePicker m_picker;
    RegionSelectionWindow m_window;
    InputGrab m_grab;
    bool m_ended = false;
    std::optional<QRect> m_pressedFrame;
    bool m_rightPressed = false;
};
