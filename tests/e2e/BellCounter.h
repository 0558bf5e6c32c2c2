#pragma once

#include <memory>
#include <xcb/xcb.h>

// Counts the rings of the X server's bell, from a connection of its own: the XKB extension
// reports every bell (QApplication::beep() rings it) to the clients that ask, whoever rang it.
class BellCounter {
public:
    BellCounter();
    ~BellCounter();
    BellCounter(const BellCounter&) = delete;
    BellCounter& operator=(const BellCounter&) = delete;

    // False when there is no X server or it has no XKB.
    bool isReady() const { return m_ready; }
    // Bells rung since this counter was made; reads whatever the server has reported so far.
    int count();
    // Waits until the server has caught up with every request made before this call (so that a
    // bell rung before it has been reported), then counts.
    int settledCount();

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    uint8_t m_xkbEvent = 0;
    bool m_ready = false;
    int m_count = 0;
};
