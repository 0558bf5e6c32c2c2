#pragma once

#include <QString>
#include <functional>

// Keeps an X error of this process's Xlib connections (the screen capture's) from ending the program:
// Xlib's default handler exits. While a trap lives, every such error goes to its handler instead, on
// the thread that made the failing call; windowLost tells that the error concerns the watched window
// (it was destroyed or is no longer viewable). Without a trap, errors go to the handler that was
// installed before.
class X11ErrorTrap {
public:
    using Handler = std::function<void(bool windowLost, const QString& description)>;

    X11ErrorTrap(unsigned long windowId, Handler handler);
    ~X11ErrorTrap();

    X11ErrorTrap(const X11ErrorTrap&) = delete;
    X11ErrorTrap& operator=(const X11ErrorTrap&) = delete;

private:
    friend struct X11ErrorTrapRegistry;

    unsigned long m_windowId;
    Handler m_handler;
};
