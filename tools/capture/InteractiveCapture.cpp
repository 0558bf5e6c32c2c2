#include "InteractiveCapture.h"

#include "CaptureFileWriter.h"

#include <QCursor>

using namespace Qt::StringLiterals;

InteractiveCapture::InteractiveCapture(const CaptureRequest& request, const QImage& frozen,
    const QList<QRect>& monitors, const QList<QRect>& frames)
    : m_request(request)
    , m_frozen(frozen)
    , m_drag(monitors)
    , m_picker(frames, frozen.rect())
    , m_window(frozen, frozen.rect())
{
    m_window.setCursor(
        request.mode == CaptureRequest::Mode::region ? Qt::CrossCursor : Qt::PointingHandCursor);
    m_grabRetry.setInterval(25);
    connect(&m_grabRetry, &QTimer::timeout, this, &InteractiveCapture::tryToGrab);
    connect(&m_window, &FrozenDesktopWindow::exposed, this, [this] {
        if (!m_grabbed && !m_grabRetry.isActive() && !m_ended) {
            m_grabClock.start();
            tryToGrab();
        }
    });
    connect(&m_window, &FrozenDesktopWindow::pointerMoved, this, &InteractiveCapture::onPointerMoved);
    connect(&m_window, &FrozenDesktopWindow::buttonPressed, this, &InteractiveCapture::onPressed);
    connect(&m_window, &FrozenDesktopWindow::buttonReleased, this, &InteractiveCapture::onReleased);
    connect(
        &m_window, &FrozenDesktopWindow::escapePressed, this, [this] { end(CaptureExitStatus::cancelled); });
}

void InteractiveCapture::start()
{
    m_window.show();
}

void InteractiveCapture::tryToGrab()
{
    if (m_ended)
        return;
    // Both or neither: a half grab would let keys or clicks reach other programs.
    m_grabbed = m_window.setKeyboardGrabEnabled(true) && m_window.setMouseGrabEnabled(true);
    if (m_grabbed) {
        m_grabRetry.stop();
        if (m_request.mode == CaptureRequest::Mode::window)
            onPointerMoved(QCursor::pos());
        return;
    }
    releaseGrabs();
    if (m_grabClock.elapsed() >= grabPatienceMs) {
        end(CaptureExitStatus::displayFailure, u"Klavye ve fare alınamadı; başka bir program tutuyor."_s);
        return;
    }
    m_grabRetry.start();
}

void InteractiveCapture::releaseGrabs()
{
    m_window.setMouseGrabEnabled(false);
    m_window.setKeyboardGrabEnabled(false);
}

void InteractiveCapture::onPointerMoved(const QPoint& position)
{
    if (!m_grabbed)
        return;
    if (m_request.mode == CaptureRequest::Mode::window)
        m_window.setLit(m_picker.at(position).value_or(QRect()));
    else if (m_anchor)
        m_window.setLit(m_drag.between(*m_anchor, position) & m_frozen.rect());
}

void InteractiveCapture::onPressed(Qt::MouseButton button, const QPoint& position)
{
    if (!m_grabbed)
        return;
    if (button == Qt::RightButton) {
        m_rightPressed = true;
    } else if (button == Qt::LeftButton) {
        if (m_request.mode == CaptureRequest::Mode::window) {
            m_pressedFrame = m_picker.at(position);
            m_window.setLit(m_pressedFrame.value_or(QRect()));
        } else {
            m_anchor = position;
            m_window.setLit({});
        }
    }
}

void InteractiveCapture::onReleased(Qt::MouseButton button, const QPoint& position)
{
    if (!m_grabbed)
        return;
    if (button == Qt::RightButton && m_rightPressed) {
        end(CaptureExitStatus::cancelled);
        return;
    }
    if (button != Qt::LeftButton)
        return;
    if (m_request.mode == CaptureRequest::Mode::window) {
        // A click is a press and a release on the same window; the bare desktop picks nothing.
        const std::optional<QRect> frame = m_picker.at(position);
        if (frame && frame == m_pressedFrame)
            take(*frame);
        m_pressedFrame.reset();
        return;
    }
    if (!m_anchor)
        return;
    const QRect selected = m_drag.between(*m_anchor, position) & m_frozen.rect();
    m_anchor.reset();
    if (selected.isEmpty()) {
        // A click without a drag selects nothing: keep waiting for a real one.
        m_window.setLit({});
        return;
    }
    take(selected);
}

void InteractiveCapture::take(const QRect& rect)
{
    // Give the desktop back at once; the picture comes from the frozen copy anyway.
    releaseGrabs();
    m_window.hide();
    QString error;
    if (CaptureFileWriter::write(m_frozen.copy(rect), m_request.path, m_request.format, &error))
        end(CaptureExitStatus::written);
    else
        end(CaptureExitStatus::writeFailure, error);
}

void InteractiveCapture::end(CaptureExitStatus status, const QString& reason)
{
    if (m_ended)
        return;
    m_ended = true;
    m_grabRetry.stop();
    releaseGrabs();
    m_window.hide();
    Q_EMIT finished(status, reason);
}
