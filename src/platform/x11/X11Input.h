#pragma once

#include "X11Connection.h"

#include <QList>
#include <QPoint>

// Real pointer and key input through the XTest extension, as if from a device.
class X11Input {
public:
    explicit X11Input(X11Connection& connection);

    bool isAvailable() const { return m_available; }

    void movePointer(const QPoint& rootPosition);
    void pressButton(int button);
    void releaseButton(int button);
    // Delays the next event by the given time.
    void pause(int milliseconds);
    void click(const QPoint& rootPosition, int button = 1);
    QPoint pointer() const;

    // Presses the keys carrying these keysyms in order and releases them in reverse, like a
    // hand typing a combination (e.g. Alt_L, Shift_L, Super_L, 5). False if a keysym has no key.
    bool typeCombination(const QList<quint32>& keysyms);
    bool pressKey(quint32 keysym);
    bool releaseKey(quint32 keysym);

private:
    void fake(uint8_t type, uint8_t detail, const QPoint& position = {});
    uint8_t keycodeOf(quint32 keysym) const;

    X11Connection& m_connection;
    bool m_available = false;
    uint32_t m_delay = 0;
};
