#pragma once

#include "X11Connection.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>
#include <optional>

// Read-only questions about the windows on an X server.
class X11Windows {
public:
    explicit X11Windows(X11Connection& connection);

    QList<xcb_window_t> children(xcb_window_t window) const;
    // Every window below the root, depth first.
    QList<xcb_window_t> allWindows() const;
    // _NET_CLIENT_LIST_STACKING of the window manager, bottom to top.
    QList<xcb_window_t> clientsStacking() const;

    std::optional<xcb_window_t> parent(xcb_window_t window) const;
    bool isViewable(xcb_window_t window) const;
    bool isOverrideRedirect(xcb_window_t window) const;
    // Geometry in root coordinates.
    std::optional<QRect> rootGeometry(xcb_window_t window) const;

    std::optional<quint32> pid(xcb_window_t window) const;
    // _NET_WM_NAME, else WM_NAME.
    QString title(xcb_window_t window) const;
    // The two strings of WM_CLASS: instance and class.
    QStringList wmClass(xcb_window_t window) const;
    QList<xcb_atom_t> atoms(xcb_window_t window, const QByteArray& property) const;
    std::optional<quint32> cardinal(xcb_window_t window, const QByteArray& property) const;

    // The pixels of a rectangle of the root window as shown on screen.
    QImage grab(const QRect& rootRect) const;

private:
    QByteArray property(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const;

    X11Connection& m_connection;
};
