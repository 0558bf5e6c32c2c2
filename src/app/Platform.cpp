#include "Platform.h"

#include "PortalGlobalKeys.h"
#include "PortalVideoDesktop.h"
#include "WaylandPointerScreen.h"
#include "WaylandScreenCapturePermission.h"
#include "X11GlobalKeys.h"
#include "X11PointerScreen.h"
#include "X11RecordingDesktop.h"
#include "X11ScreenCapturePermission.h"
#include "X11VideoSources.h"

#include <QApplication>

bool Platform::isWaylandSession()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void Platform::prepare()
{
    // XWayland's picture lacks every native window and its key grabs see nothing of them: a
    // Wayland session gets a native Wayland client.
    if (isWaylandSession())
        qputenv("QT_QPA_PLATFORM", "wayland");
}

Platform::Platform(QApplication& application, QSettings& store)
    : m_wayland(isWaylandSession())
{
    if (m_wayland) {
        m_permission = std::make_unique<WaylandScreenCapturePermission>();
        m_pointer = std::make_unique<WaylandPointerScreen>();
        m_globalKeys = std::make_unique<PortalGlobalKeys>();
        m_portalVideo = std::make_unique<PortalVideoDesktop>(store);
        return;
    }
    m_permission = std::make_unique<X11ScreenCapturePermission>();
    m_pointer = std::make_unique<X11PointerScreen>();
    if (auto* x11 = application.nativeInterface<QNativeInterface::QX11Application>()) {
        xcb_connection_t* connection = x11->connection();
        m_globalKeys = std::make_unique<X11GlobalKeys>(
            connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
    }
    m_recordingDesktop = std::make_unique<X11RecordingDesktop>();
    m_videoSources = std::make_unique<X11VideoSources>();
}

Platform::~Platform() = default;

RecordingDesktopInterface* Platform::recordingDesktop() const
{
    if (m_portalVideo)
        return m_portalVideo.get();
    return m_recordingDesktop.get();
}

VideoSources* Platform::videoSources() const
{
    if (m_portalVideo)
        return m_portalVideo.get();
    return m_videoSources.get();
}
