#pragma once

#include "CaptureExitStatus.h"
#include "CaptureRequest.h"
#include "DragSelection.h"
#include "FramePicker.h"
#include "FrozenDesktopWindow.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <optional>

// The interactive modes on the frozen desktop: shows it, takes the keyboard and the pointer, and
// lets the user drag a rectangle (region) or click a window (window). Escape or the right button
// cancels. Ends with finished(); the file is written by then.
class InteractiveCapture : public QObject {
    Q_OBJECT

public:
    // How long other programs may keep the keyboard or pointer (a menu that is just closing)
    // before we give up.
    static constexpr int grabPatienceMs = 2000;

    // frozen: the whole root window; monitors and frames (bottom to top) in root coordinates.
    InteractiveCapture(const CaptureRequest& request, const QImage& frozen, const QList<QRect>& monitors,
        const QList<QRect>& frames);

    void start();

Q_SIGNALS:
    // reason: empty unless the status is a failure.
    void finished(CaptureExitStatus status, const QString& reason);

private:
    void tryToGrab();
    void releaseGrabs();
    void onPointerMoved(const QPoint& position);
    void onPressed(Qt::MouseButton button, const QPoint& position);
    void onReleased(Qt::MouseButton button, const QPoint& position);
    void take(const QRect& rect);
    void end(CaptureExitStatus status, const QString& reason = {});

    CaptureRequest m_request;
    QImage m_frozen;
    DragSelection m_drag;
    FramePicker m_picker;
    FrozenDesktopWindow m_window;
    QTimer m_grabRetry;
    QElapsedTimer m_grabClock;
    bool m_grabbed = false;
    bool m_ended = false;
    // Region mode: where the left button went down. Window mode: the frame it went down on.
    std::optional<QPoint> m_anchor;
    std::optional<QRect> m_pressedFrame;
    bool m_rightPressed = false;
};
