#pragma once

#include "ScreenCapturePermission.h"

// Every X client may read the screen: the check always passes.
class X11ScreenCapturePermission : public ScreenCapturePermission {
public:
    bool preflight() override { return true; }
    void request() override { }
    bool canOpenSettings() const override { return false; }
    bool openSettings() override { return false; }
};
