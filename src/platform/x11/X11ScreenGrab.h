#pragma once

#include "X11Connection.h"

#include <QImage>
#include <QRect>
#include <QString>

// Takes the pixels of the root window as shown on screen, through shared memory (MIT-SHM) where
// the server offers it and through the plain protocol otherwise. The server's 32-bit pixels are
// handed over as they are: the image wraps the buffer the server wrote into, without a copy.
class X11ScreenGrab {
public:
    explicit X11ScreenGrab(X11Connection& connection);

    // False, with a reason, when the root window's pixels are not 32-bit BGRX in host order.
    bool isSupported() const { return m_supported; }
    QString unsupportedReason() const { return m_reason; }
    bool usesSharedMemory() const { return m_sharedMemory; }

    // A Format_RGB32 image of the given rectangle of the root window (clipped to it), null on failure.
    QImage grab(const QRect& rootRect);
    QRect rootRect() const;

private:
    QImage grabShared(const QRect& rect);
    QImage grabPlain(const QRect& rect);

    X11Connection& m_connection;
    bool m_supported = false;
    bool m_sharedMemory = false;
    QString m_reason;
};
