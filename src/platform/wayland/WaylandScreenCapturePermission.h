#pragma once

#include "DesktopSettings.h"
#include "ScreenCapturePermission.h"

// On Wayland the desktop portal answers for every picture whether the program may have it, so
// there is nothing to check beforehand: a refusal comes back from the screenshot helper. The
// permission's place is the desktop's own settings program, where there is one.
class WaylandScreenCapturePermission : public ScreenCapturePermission {
public:
    bool preflight() override { return true; }
    void request() override { }
    bool canOpenSettings() const override { return !m_settings.command().isEmpty(); }
    bool openSettings() override { return m_settings.open(); }

private:
    DesktopSettings m_settings;
};
