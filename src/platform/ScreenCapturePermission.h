#pragma once

// Whether the program may read the screen. X11 has no such permission. On Wayland the desktop
// portal decides at every picture, so the check passes and a refusal comes back from the helper.
class ScreenCapturePermission {
public:
    virtual ~ScreenCapturePermission() = default;

    virtual bool preflight() = 0;
    // Lets the system register the program and ask the user in its own way.
    virtual void request() = 0;
    // The desktop has a settings program that can be opened where the permission is given.
    virtual bool canOpenSettings() const = 0;
    // Opens it; false when there is none or it would not start.
    virtual bool openSettings() = 0;
};
