#include "X11RecordingDesktop.h"

#include "X11ErrorTrap.h"

namespace {

class TrapWatch : public RecordingDesktopInterface::ErrorWatch {
public:
    TrapWatch(quint32 windowId, RecordingDesktopInterface::ErrorHandler handler)
        : m_trap(windowId, std::move(handler))
    {
    }

private:
    X11ErrorTrap m_trap;
};

} // namespace

X11RecordingDesktop::X11RecordingDesktop(const QByteArray& displayName)
    : m_displayName(displayName)
    , m_connection(displayName.isEmpty() ? nullptr : displayName.constData())
    , m_outputs(m_connection)
    , m_windows(m_connection)
{
}

std::optional<CaptureStream> X11RecordingDesktop::stream(quint32)
{
    // ximagesrc opens a connection of its own to the same display.
    return CaptureStream { CaptureStream::Kind::x11Display, QString::fromLocal8Bit(m_displayName), -1, 0 };
}

std::optional<QRect> X11RecordingDesktop::displayGeometry(quint32 outputId)
{
    if (!m_connection.isOpen())
        return std::nullopt;
    const std::optional<X11Outputs::Output> output = m_outputs.find(outputId);
    if (!output)
        return std::nullopt;
    return output->geometry;
}

std::optional<QRect> X11RecordingDesktop::windowGeometry(quint32 windowId)
{
    if (!m_connection.isOpen() || windowId == 0 || !m_windows.isViewable(windowId))
        return std::nullopt;
    return m_windows.rootGeometry(windowId);
}

std::unique_ptr<RecordingDesktopInterface::ErrorWatch> X11RecordingDesktop::watchCapture(
    quint32 sourceId, bool window, ErrorHandler handler)
{
    // The capture's display connection is Xlib's; its errors must not end the process.
    return std::make_unique<TrapWatch>(window ? sourceId : 0, std::move(handler));
}
