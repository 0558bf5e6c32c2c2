#pragma once

#include "X11Connection.h"

#include <QList>
#include <QRect>
#include <QString>

// The monitors of the desktop as RandR describes them, in the order Qt lists its screens on X11:
// the primary monitor first, then the others in RandR's order. So "monitor n" here is screen n of
// QGuiApplication::screens() in any Qt program on the same desktop.
class X11Monitors {
public:
    struct Monitor {
        QString name;
        QRect geometry;
        bool primary = false;
    };

    explicit X11Monitors(X11Connection& connection);

    // Never empty while connected: without RandR (or without an active monitor) the whole root
    // window is the one monitor, as for Qt.
    QList<Monitor> list() const;

private:
    // RandR 1.5 monitors, which is what Qt uses when the server has them.
    QList<Monitor> fromMonitors() const;
    // RandR 1.2 outputs with a CRTC, Qt's way on older servers.
    QList<Monitor> fromOutputs() const;
    QString atomName(xcb_atom_t atom) const;

    X11Connection& m_connection;
    int m_randrMinor = -1;
};
