#pragma once

#include "X11Connection.h"
#include "X11Input.h"
#include "X11Windows.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <optional>

// The virtual desktop as the tests of vexet-capture see and drive it from outside: pixels
// through the plain protocol, input through XTest, grabs as any other client meets them.
class CaptureDesktop {
public:
    CaptureDesktop();

    bool isReady() const { return m_connection.isOpen() && m_input.isAvailable(); }
    X11Connection& connection() { return m_connection; }
    X11Windows& windows() { return m_windows; }
    X11Input& input() { return m_input; }
    QRect rootRect() const;

    // The pixels of a rectangle of the root window once they equal the expected ones.
    bool waitForPixels(const QRect& rootRect, const QImage& expected, int milliseconds = 20000);
    // Once two grabs in a row agree.
    QImage stableGrab(const QRect& rootRect);

    // True once somebody holds the pointer: another client cannot grab it (we try, and let go
    // at once when we got it).
    bool pointerHeldElsewhere();
    bool waitForPointerHeldElsewhere(int milliseconds = 20000);
    // Holds the pointer and the keyboard ourselves, as a program with an open menu does.
    bool holdInput();
    void releaseInput();

    void tapKey(quint32 keysym);
    // Presses the left button at from, moves to to in a few steps and releases it there.
    void drag(const QPoint& from, const QPoint& to);

    // The frame the window manager put round a client: its ancestor just below the root, in
    // root coordinates, border included.
    std::optional<QRect> frameOf(xcb_window_t client);
    // The managed, viewable windows of a process, bottom to top.
    QList<xcb_window_t> clientsOf(qint64 pid);

private:
    X11Connection m_connection;
    X11Windows m_windows;
    X11Input m_input;
};
