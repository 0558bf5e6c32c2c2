#pragma once

#include "CaptureRequest.h"
#include "CaptureToolProtocol.h"

class X11Connection;

// vexet-capture on an X11 desktop: connects to the X server and takes the picture the request asks
// for. The whole-monitor capture needs no Qt application object and no window, so it starts and
// ends quickly; only the interactive modes start a QGuiApplication.
class X11Capture {
public:
    explicit X11Capture(const CaptureRequest& request);

    // The exit status; a failure has been told on standard error in one line.
    CaptureExitStatus run();

private:
    CaptureExitStatus captureMonitor(X11Connection& connection);
    CaptureExitStatus captureInteractively(X11Connection& connection);

    CaptureRequest m_request;
};
