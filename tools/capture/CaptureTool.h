#pragma once

#include "CaptureExitStatus.h"
#include "CaptureRequest.h"

#include <QString>

class X11Connection;

// One run of vexet-capture: connects to the X server, takes the picture the request asks for
// and writes it. The whole-monitor capture needs no Qt application object and no window, so it
// starts and ends quickly; only the interactive modes start a QGuiApplication.
class CaptureTool {
public:
    explicit CaptureTool(const CaptureRequest& request);

    // The exit status; a failure has been told on standard error in one line.
    CaptureExitStatus run();

private:
    CaptureExitStatus captureMonitor(X11Connection& connection);
    CaptureExitStatus captureInteractively(X11Connection& connection);
    static CaptureExitStatus fail(CaptureExitStatus status, const QString& reason);

    CaptureRequest m_request;
};
