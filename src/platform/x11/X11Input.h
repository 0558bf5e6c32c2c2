#pragma once

#include "X11Connection.h"

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

private:
    void fake(uint8_t type, uint8_t detail, const QPoint& position = {});

    X11Connection& m_connection;
    bool m_available = false;
    uint32_t m_delay = 0;
};
