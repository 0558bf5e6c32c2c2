#pragma once

#include "X11Connection.h"
#include "X11Input.h"
#include "X11Windows.h"

#include <QImage>
#include <QList>
#include <optional>

// Looks at the virtual desktop from outside, as another X client would.
class DesktopProbe {
public:
    DesktopProbe();

    bool isReady() const { return m_connection.isOpen() && m_input.isAvailable(); }
    X11Windows& windows() { return m_windows; }
    X11Input& input() { return m_input; }

    // The window of the process that is docked in the system tray, once it is shown there.
    std::optional<xcb_window_t> trayIcon(qint64 pid);
    // Windows of the process that the window manager manages and that are on screen.
    QList<xcb_window_t> mappedClientWindows(qint64 pid);
    // Popup windows of the process that are on screen, tooltips and Qt's 1 × 1 helpers aside: menus.
    QList<xcb_window_t> popupMenus(qint64 pid);

    // Mapped client windows of the process with this title.
    QList<xcb_window_t> windowsTitled(qint64 pid, const QString& title);
    // Waits until exactly `count` such windows are mapped.
    bool waitForWindowsTitled(qint64 pid, const QString& title, qsizetype count, int timeoutMs = 20000);
    // Top-level windows on screen whose WM_CLASS names this program (e.g. "vexet-capture").
    QList<xcb_window_t> programWindows(const QString& program);

    // Gives a window the keyboard, as a click on it would.
    void focus(xcb_window_t window);
    // Asks the window's program to close it, as the title bar's close button does.
    void requestClose(xcb_window_t window);

    // The rectangle of a window as it shows on screen, once two grabs in a row agree.
    QImage stableGrab(xcb_window_t window);

    // Tooltip windows of the process that are on screen.
    QList<xcb_window_t> toolTips(qint64 pid);

private:
    bool insideTray(xcb_window_t window);

    X11Connection m_connection;
    X11Windows m_windows;
    X11Input m_input;
};
