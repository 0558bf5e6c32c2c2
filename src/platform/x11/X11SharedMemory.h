#pragma once

#include "X11Connection.h"

#include <cstddef>
#include <xcb/shm.h>

// A System V shared memory segment that the X server can write pixels into: mapped here and
// attached there. It is marked for removal as soon as the server holds it, so the kernel frees
// it with the last mapping even if this process dies.
class X11SharedMemory {
public:
    // An invalid segment when the server cannot share memory with us (no MIT-SHM, a remote
    // server, no memory).
    X11SharedMemory(X11Connection& connection, std::size_t size);
    ~X11SharedMemory();

    X11SharedMemory(const X11SharedMemory&) = delete;
    X11SharedMemory& operator=(const X11SharedMemory&) = delete;

    bool isValid() const { return m_segment != XCB_NONE; }
    xcb_shm_seg_t segment() const { return m_segment; }
    unsigned char* data() const { return static_cast<unsigned char*>(m_address); }

    // Detaches the server and hands the local mapping to the caller, who unmaps it with unmap().
    void* release();
    static void unmap(void* address);

    // True when the server offers the MIT-SHM extension.
    static bool isOffered(X11Connection& connection);

private:
    X11Connection& m_connection;
    void* m_address = nullptr;
    xcb_shm_seg_t m_segment = XCB_NONE;
};
