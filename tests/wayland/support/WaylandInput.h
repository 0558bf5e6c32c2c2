#pragma once

#include "RfbConnection.h"
#include "SwayIpc.h"

#include <QMap>
#include <QPoint>
#include <memory>

// Pointer and keyboard of the Wayland test desktop, driven through the VNC servers it runs on
// every output ($VEXET_VNC_SOCKETS, "OUTPUT=PATH:OUTPUT=PATH"). Positions are in the desktop's
// logical coordinates (QScreen::geometry()); each event goes to the server of the output under
// the point, in that output's device pixels. Unlike the compositor's own pointer commands, this
// gives clients real motion while a button is held.
class WaylandInput {
public:
    // X keysyms for the keys tests use most.
    enum Keysym : quint32 {
        Escape = 0xff1b,
        Return = 0xff0d,
        Tab = 0xff09,
        BackSpace = 0xff08,
        Left = 0xff51,
        Up = 0xff52,
        Right = 0xff53,
        Down = 0xff54,
        ShiftL = 0xffe1,
        ControlL = 0xffe3,
        AltL = 0xffe9,
        SuperL = 0xffeb,
    };

    // Connects to every VNC server at once; the connections stay open for the object's life.
    WaylandInput();
    ~WaylandInput();
    WaylandInput(const WaylandInput&) = delete;
    WaylandInput& operator=(const WaylandInput&) = delete;

    bool isReady() const { return m_ready; }
    QString errorString() const { return m_error; }
    QStringList outputs() const { return m_connections.keys(); }

    bool move(QPoint position);
    bool press(Qt::MouseButton button = Qt::LeftButton);
    bool release(Qt::MouseButton button = Qt::LeftButton);
    bool click(QPoint position, Qt::MouseButton button = Qt::LeftButton);
    bool rightClick(QPoint position) { return click(position, Qt::RightButton); }
    // Press at `from`, `steps` motions along the line to `to` with the button held, release
    // there. Both ends must be on the same output.
    bool drag(QPoint from, QPoint to, int steps = 10, Qt::MouseButton button = Qt::LeftButton);

    bool keyDown(quint32 keysym);
    bool keyUp(quint32 keysym);
    // Presses the modifiers in order, taps the key, releases the modifiers in reverse order.
    bool keyClick(quint32 keysym, const QList<quint32>& modifiers = {});

private:
    bool sendPointer(QPoint position, quint8 buttons);
    bool fail(const QString& error);

    SwayIpc m_sway;
    QMap<QString, std::shared_ptr<RfbConnection>> m_connections;
    QString m_keyboardOutput; // one keyboard for all keys: each device keeps its own modifiers
    QString m_pointerOutput; // the output of the last pointer event
    QPoint m_position;
    quint8 m_buttons = 0;
    bool m_ready = false;
    QString m_error;
};
