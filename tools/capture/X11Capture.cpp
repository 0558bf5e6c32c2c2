#include "X11Capture.h"

#include "CaptureFileWriter.h"
#include "CaptureTool.h"
#include "RegionCapture.h"
#include "WindowPick.h"
#include "X11ClientFrames.h"
#include "X11Connection.h"
#include "X11Monitors.h"
#include "X11ScreenGrab.h"

#include <QGuiApplication>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// 0-based: the first monitor that holds the pointer, else the first one.
qsizetype monitorUnderPointer(X11Connection& connection, const QList<X11Monitors::Monitor>& monitors)
{
    const XcbReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(
        connection.get(), xcb_query_pointer(connection.get(), connection.root()), nullptr));
    if (!pointer)
        return 0;
    const QPoint position(pointer->root_x, pointer->root_y);
    for (qsizetype i = 0; i < monitors.size(); ++i) {
        if (monitors.at(i).geometry.contains(position))
            return i;
    }
    return 0;
}

} // namespace

X11Capture::X11Capture(const CaptureRequest& request)
    : m_request(request)
{
}

CaptureExitStatus X11Capture::run()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return CaptureTool::fail(
            CaptureExitStatus::displayFailure, u"X sunucusuna bağlanılamadı: DISPLAY tanımlı değil."_s);
    X11Connection connection;
    if (!connection.isOpen() || !connection.screen())
        return CaptureTool::fail(CaptureExitStatus::displayFailure,
            u"X sunucusuna bağlanılamadı (DISPLAY=%1)."_s.arg(QString::fromLocal8Bit(display)));
    if (m_request.mode == CaptureRequest::Mode::screen)
        return captureMonitor(connection);
    return captureInteractively(connection);
}

CaptureExitStatus X11Capture::captureMonitor(X11Connection& connection)
{
    const QList<X11Monitors::Monitor> monitors = X11Monitors(connection).list();
    const qsizetype index
        = m_request.display ? qsizetype(*m_request.display - 1) : monitorUnderPointer(connection, monitors);
    if (index >= monitors.size())
        return CaptureTool::fail(
            CaptureExitStatus::displayFailure, CaptureTool::noSuchMonitor(index + 1, monitors.size()));
    X11ScreenGrab grabber(connection);
    if (!grabber.isSupported())
        return CaptureTool::fail(CaptureExitStatus::displayFailure, grabber.unsupportedReason());
    const QImage image = grabber.grab(monitors.at(index).geometry);
    if (image.isNull())
        return CaptureTool::fail(CaptureExitStatus::displayFailure, u"Ekranın görüntüsü alınamadı."_s);
    return CaptureTool::write(image, m_request);
}

CaptureExitStatus X11Capture::captureInteractively(X11Connection& connection)
{
    // Freeze first: the picture is the desktop at the moment of the request, before any window
    // of ours exists.
    X11ScreenGrab grabber(connection);
    if (!grabber.isSupported())
        return CaptureTool::fail(CaptureExitStatus::displayFailure, grabber.unsupportedReason());
    const QImage frozen = grabber.grab(grabber.rootRect());
    if (frozen.isNull())
        return CaptureTool::fail(CaptureExitStatus::displayFailure, u"Masaüstünün görüntüsü alınamadı."_s);
    QList<QRect> monitors;
    for (const X11Monitors::Monitor& monitor : X11Monitors(connection).list())
        monitors.append(monitor.geometry);
    QList<QRect> frames;
    if (m_request.mode == CaptureRequest::Mode::window) {
        for (const X11ClientFrames::Frame& frame :
            X11ClientFrames(connection).list(static_cast<quint32>(getpid())))
            frames.append(frame.rect);
    }

    // The overlay works in the server's pixels on the same X server, whatever the session's
    // scaling settings say.
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    qunsetenv("QT_SCALE_FACTOR");
    qunsetenv("QT_SCREEN_SCALE_FACTORS");
    const std::unique_ptr<QGuiApplication> application = CaptureTool::makeApplication();

    if (m_request.mode == CaptureRequest::Mode::window) {
        WindowPick pick(m_request, frozen, frames);
        return CaptureTool::runUntilFinished(pick);
    }
    const RegionSelector::Sheet desktop { frozen, frozen.rect(), nullptr, monitors, frozen.rect() };
    RegionCapture region(m_request, { desktop }, true);
    return CaptureTool::runUntilFinished(region);
}
