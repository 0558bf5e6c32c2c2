#include "CaptureTool.h"

#include "CaptureFileWriter.h"
#include "InteractiveCapture.h"
#include "X11ClientFrames.h"
#include "X11Connection.h"
#include "X11Monitors.h"
#include "X11ScreenGrab.h"

#include <QGuiApplication>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

CaptureTool::CaptureTool(const CaptureRequest& request)
    : m_request(request)
{
}

CaptureExitStatus CaptureTool::run()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return fail(
            CaptureExitStatus::displayFailure, u"X sunucusuna bağlanılamadı: DISPLAY tanımlı değil."_s);
    X11Connection connection;
    if (!connection.isOpen() || !connection.screen())
        return fail(CaptureExitStatus::displayFailure,
            u"X sunucusuna bağlanılamadı (DISPLAY=%1)."_s.arg(QString::fromLocal8Bit(display)));
    if (m_request.mode == CaptureRequest::Mode::screen)
        return captureMonitor(connection);
    return captureInteractively(connection);
}

CaptureExitStatus CaptureTool::captureMonitor(X11Connection& connection)
{
    const QList<X11Monitors::Monitor> monitors = X11Monitors(connection).list();
    if (m_request.display > monitors.size())
        return fail(CaptureExitStatus::displayFailure,
            u"%1 numaralı ekran yok; bu masaüstünde %2 ekran var."_s.arg(m_request.display)
                .arg(monitors.size()));
    X11ScreenGrab grabber(connection);
    if (!grabber.isSupported())
        return fail(CaptureExitStatus::displayFailure, grabber.unsupportedReason());
    const QImage image = grabber.grab(monitors.at(m_request.display - 1).geometry);
    if (image.isNull())
        return fail(CaptureExitStatus::displayFailure, u"Ekranın görüntüsü alınamadı."_s);
    QString error;
    if (!CaptureFileWriter::write(image, m_request.path, m_request.format, &error))
        return fail(CaptureExitStatus::writeFailure, error);
    return CaptureExitStatus::written;
}

CaptureExitStatus CaptureTool::captureInteractively(X11Connection& connection)
{
    // Freeze first: the picture is the desktop at the moment of the request, before any window
    // of ours exists.
    X11ScreenGrab grabber(connection);
    if (!grabber.isSupported())
        return fail(CaptureExitStatus::displayFailure, grabber.unsupportedReason());
    const QImage frozen = grabber.grab(grabber.rootRect());
    if (frozen.isNull())
        return fail(CaptureExitStatus::displayFailure, u"Masaüstünün görüntüsü alınamadı."_s);
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
    // Qt reads options of its own from the command line; ours must not be taken for them.
    static char programName[] = "vexet-capture";
    static char* qtArguments[] = { programName, nullptr };
    int qtArgumentCount = 1;
    QGuiApplication application(qtArgumentCount, qtArguments);

    CaptureExitStatus status = CaptureExitStatus::cancelled;
    InteractiveCapture capture(m_request, frozen, monitors, frames);
    QObject::connect(&capture, &InteractiveCapture::finished, &application,
        [&](CaptureExitStatus result, const QString& reason) {
            status = result;
            if (!reason.isEmpty())
                fail(result, reason);
            application.exit(static_cast<int>(result));
        });
    capture.start();
    application.exec();
    return status;
}

CaptureExitStatus CaptureTool::fail(CaptureExitStatus status, const QString& reason)
{
    std::fprintf(stderr, "vexet-capture: %s\n", qPrintable(reason));
    return status;
}
