#pragma once

#include "X11Connection.h"

#include <QList>
#include <QRect>
#include <optional>

// The windows a window pick offers: the clients the window manager manages and shows, each with
// the frame the window manager put round it.
class X11ClientFrames {
public:
    struct Frame {
        xcb_window_t client = XCB_NONE;
        // The client's ancestor that is a child of the root (the client itself without a
        // reparenting window manager), border included, in root coordinates.
        QRect rect;
    };

    explicit X11ClientFrames(X11Connection& connection);

    // Bottom to top, as _NET_CLIENT_LIST_STACKING orders them. Left out: clients whose frame is
    // not viewable (minimised, on another workspace), desktop windows (they are the bare
    // desktop) and the windows of the process ownPid.
    QList<Frame> list(quint32 ownPid) const;

private:
    std::optional<xcb_window_t> frameOf(xcb_window_t client) const;
    std::optional<QRect> outerGeometry(xcb_window_t window) const;

    X11Connection& m_connection;
};
