#include "CaptureTool.h"

#include "CaptureFileWriter.h"
#include "PortalCapture.h"
#include "X11Capture.h"

#include <cstdio>

using namespace Qt::StringLiterals;

CaptureExitStatus CaptureTool::run(const CaptureRequest& request)
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return PortalCapture::run(request);
    return X11Capture(request).run();
}

CaptureExitStatus CaptureTool::fail(CaptureExitStatus status, const QString& reason)
{
    std::fprintf(stderr, "vexet-capture: %s\n", qPrintable(reason));
    return status;
}

CaptureExitStatus CaptureTool::write(const QImage& image, const CaptureRequest& request)
{
    QString error;
    if (!CaptureFileWriter::write(image, request.path, request.format, &error))
        return fail(CaptureExitStatus::writeFailure, error);
    return CaptureExitStatus::written;
}

QString CaptureTool::noSuchMonitor(qsizetype number, qsizetype count)
{
    return u"%1 numaralı ekran yok; bu masaüstünde %2 ekran var."_s.arg(number).arg(count);
}

std::unique_ptr<QGuiApplication> CaptureTool::makeApplication()
{
    // Qt reads options of its own from the command line; ours must not be taken for them.
    static char programName[] = "vexet-capture";
    static char* qtArguments[] = { programName, nullptr };
    static int qtArgumentCount = 1;
    return std::make_unique<QGuiApplication>(qtArgumentCount, qtArguments);
}
