#pragma once

// Whether the program may read the screen. X11 has no such permission; a desktop portal does.
class ScreenCapturePermission {
public:
    virtual ~ScreenCapturePermission() = default;

    virtual bool preflight() = 0;
    // Lets the system register the program and ask the user in its own way.
    virtual void request() = 0;
    // Opens the system's settings page for the permission; false when there is none.
    virtual bool openSettings() = 0;
};
