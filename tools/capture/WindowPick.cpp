#include "WindowPick.h"

#include "CaptureFileWriter.h"

#include <QCursor>
#include <QtMath>

namespace {

QPoint pixel(const QPointF& position)
{
    return QPoint(qFloor(position.x()), qFloor(position.y()));
}

} // namespace

WindowPick::WindowPick(const CaptureRequest& request, const QImage& frozen, const QList<QRect>& frames)
    : m_request(request)
    , m_picker(frames, frozen.rect())
    , m_window(frozen, RegionSelectionLook::screenshot())
    , m_grab(m_window)
{
    m_window.setFlags(
        Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint);
    m_window.setGeometry(frozen.rect());
    m_window.setCursor(Qt::PointingHandCursor);
    connect(&m_window, &RegionSelectionWindow::exposed, &m_grab, &InputGrab::start);
    connect(&m_grab, &InputGrab::grabbed, this, [this] { onPointerMoved(QCursor::pos()); });
    connect(&m_grab, &InputGrab::failed, this,
        [this](const QString& reason) { end(CaptureExitStatus::displayFailure, reason); });
    connect(&m_window, &RegionSelectionWindow::pointerMoved, this, &WindowPick::onPointerMoved);
    connect(&m_window, &RegionSelectionWindow::buttonPressed, this, &WindowPick::onPressed);
    connect(&m_window, &RegionSelectionWindow::buttonReleased, this, &WindowPick::onReleased);
    connect(&m_window, &RegionSelectionWindow::escapePressed, this,
        [this] { end(CaptureExitStatus::cancelled); });
}

void WindowPick::start()
{
    m_window.show();
}

void WindowPick::onPointerMoved(const QPointF& position)
{
    if (m_grab.isGrabbed())
        m_window.setLit(m_picker.at(pixel(position)).value_or(QRect()));
}

void WindowPick::onPressed(Qt::MouseButton button, const QPointF& position)
{
    if (!m_grab.isGrabbed())
        return;
    if (button == Qt::RightButton) {
        m_rightPressed = true;
    } else if (button == Qt::LeftButton) {
        m_pressedFrame = m_picker.at(pixel(position));
        m_window.setLit(m_pressedFrame.value_or(QRect()));
    }
}

void WindowPick::onReleased(Qt::MouseButton button, const QPointF& position)
{
    if (!m_grab.isGrabbed())
        return;
    if (button == Qt::RightButton && m_rightPressed) {
        end(CaptureExitStatus::cancelled);
        return;
    }
    if (button != Qt::LeftButton)
        return;
    // A click is a press and a release on the same window; the bare desktop picks nothing.
    const std::optional<QRect> frame = m_picker.at(pixel(position));
    if (frame && frame == m_pressedFrame)
        take(*frame);
    m_pressedFrame.reset();
}

void WindowPick::take(const QRect& rect)
{
    // Give the desktop back at once; the picture comes from the frozen copy anyway.
    m_grab.release();
    m_window.hide();
    QString error;
    if (CaptureFileWriter::write(m_window.picture().copy(rect), m_request.path, m_request.format, &error))
        end(CaptureExitStatus::written);
    else
        end(CaptureExitStatus::writeFailure, error);
}

void WindowPick::end(CaptureExitStatus status, const QString& reason)
{
    if (m_ended)
        return;
    m_ended = true;
    m_grab.release();
    m_window.hide();
    Q_EMIT finished(status, reason);
}
