#pragma once

#include <QByteArray>
#include <QHash>
#include <memory>
#include <xcb/xcb.h>

// One connection to the X server, closed when the object goes. Interned atoms are remembered.
class X11Connection {
public:
    // Opens the display named by $DISPLAY (or the given name).
    explicit X11Connection(const char* displayName = nullptr);

    bool isOpen() const { return m_connection && xcb_connection_has_error(m_connection.get()) == 0; }
    xcb_connection_t* get() const { return m_connection.get(); }
    xcb_window_t root() const { return m_root; }
    xcb_screen_t* screen() const { return m_screen; }

    xcb_atom_t atom(const QByteArray& name);
    void flush() const { xcb_flush(m_connection.get()); }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_screen_t* m_screen = nullptr;
    xcb_window_t m_root = XCB_NONE;
    QHash<QByteArray, xcb_atom_t> m_atoms;
};

// Frees an xcb reply with free(), as xcb asks.
struct XcbFree {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T> using XcbReply = std::unique_ptr<T, XcbFree>;
