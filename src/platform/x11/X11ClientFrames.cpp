#include "X11ClientFrames.h"

#include "X11Windows.h"

X11ClientFrames::X11ClientFrames(X11Connection& connection)
    : m_connection(connection)
{
}

QList<X11ClientFrames::Frame> X11ClientFrames::list(quint32 ownPid) const
{
    QList<Frame> result;
    if (!m_connection.isOpen())
        return result;
    X11Windows windows(m_connection);
    const xcb_atom_t desktopType = m_connection.atom("_NET_WM_WINDOW_TYPE_DESKTOP");
    const QList<xcb_window_t> clients = windows.clientsStacking();
    for (xcb_window_t client : clients) {
        if (windows.pid(client) == ownPid
            || windows.atoms(client, "_NET_WM_WINDOW_TYPE").contains(desktopType))
            continue;
        const std::optional<xcb_window_t> frame = frameOf(client);
        if (!frame || !windows.isViewable(*frame))
            continue;
        const std::optional<QRect> rect = outerGeometry(*frame);
        if (rect && !rect->isEmpty())
            result.append({ client, *rect });
    }
    return result;
}

std::optional<xcb_window_t> X11ClientFrames::frameOf(xcb_window_t client) const
{
    X11Windows windows(m_connection);
    xcb_window_t window = client;
    // Window managers nest a client a few levels deep at most; the bound guards against a tree
    // that changes under our feet.
    for (int depth = 0; depth < 64; ++depth) {
        const std::optional<xcb_window_t> parent = windows.parent(window);
        if (!parent || *parent == XCB_NONE)
            return std::nullopt;
        if (*parent == m_connection.root())
            return window;
        window = *parent;
    }
    return std::nullopt;
}

std::optional<QRect> X11ClientFrames::outerGeometry(xcb_window_t window) const
{
    // A child of the root has its position relative to the root already; x and y are the outer
    // corner of the border, width and height the inside.
    XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr));
    if (!geometry)
        return std::nullopt;
    const int border = geometry->border_width;
    return QRect(geometry->x, geometry->y, geometry->width + 2 * border, geometry->height + 2 * border);
}
