#pragma once

#include <memory>

class GlobalKeys;
class PointerScreen;
class PortalVideoDesktop;
class QApplication;
class QSettings;
class RecordingDesktopInterface;
class ScreenCapturePermission;
class VideoSources;

// The desktop's side of the program, chosen once at start: X11, or on a Wayland session (also
// when XWayland's DISPLAY is set too) a native Wayland client that reaches the desktop only
// through its portals and never opens an X connection. The features see only the interfaces.
class Platform {
public:
    // WAYLAND_DISPLAY is set.
    static bool isWaylandSession();
    // Before the application object exists: Qt's own platform follows the session.
    static void prepare();

    // store: where the desktop's remembered choices of what to record are kept.
    Platform(QApplication& application, QSettings& store);
    ~Platform();

    bool isWayland() const { return m_wayland; }
    ScreenCapturePermission& permission() const { return *m_permission; }
    const PointerScreen& pointer() const { return *m_pointer; }
    // The program's own grabs on X11, the desktop's GlobalShortcuts portal on Wayland; none on an X
    // server that Qt does not reach natively.
    GlobalKeys* globalKeys() const { return m_globalKeys.get(); }
    RecordingDesktopInterface* recordingDesktop() const;
    VideoSources* videoSources() const;

private:
    bool m_wayland;
    std::unique_ptr<ScreenCapturePermission> m_permission;
    std::unique_ptr<PointerScreen> m_pointer;
    std::unique_ptr<GlobalKeys> m_globalKeys;
    std::unique_ptr<RecordingDesktopInterface> m_recordingDesktop;
    std::unique_ptr<VideoSources> m_videoSources;
    // Both of the above on Wayland: the ScreenCast portal's sessions.
    std::unique_ptr<PortalVideoDesktop> m_portalVideo;
};
