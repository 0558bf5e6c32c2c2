#include "X11SharedMemory.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <utility>

X11SharedMemory::X11SharedMemory(X11Connection& connection, std::size_t size)
    : m_connection(connection)
{
    const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    if (id < 0)
        return;
    void* address = shmat(id, nullptr, 0);
    if (address == reinterpret_cast<void*>(-1)) {
        shmctl(id, IPC_RMID, nullptr);
        return;
    }
    const xcb_shm_seg_t segment = xcb_generate_id(m_connection.get());
    XcbReply<xcb_generic_error_t> error(xcb_request_check(m_connection.get(),
        xcb_shm_attach_checked(m_connection.get(), segment, static_cast<uint32_t>(id), 0)));
    // Both sides hold the segment now (or the server never will): nobody else needs its id.
    shmctl(id, IPC_RMID, nullptr);
    if (error) {
        shmdt(address);
        return;
    }
    m_address = address;
    m_segment = segment;
}

X11SharedMemory::~X11SharedMemory()
{
    if (m_segment != XCB_NONE)
        xcb_shm_detach(m_connection.get(), m_segment);
    unmap(m_address);
}

void* X11SharedMemory::release()
{
    if (m_segment != XCB_NONE) {
        xcb_shm_detach(m_connection.get(), std::exchange(m_segment, XCB_NONE));
        m_connection.flush();
    }
    return std::exchange(m_address, nullptr);
}

void X11SharedMemory::unmap(void* address)
{
    if (address)
        shmdt(address);
}

bool X11SharedMemory::isOffered(X11Connection& connection)
{
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection.get(), &xcb_shm_id);
    if (!extension || !extension->present)
        return false;
    XcbReply<xcb_shm_query_version_reply_t> version(
        xcb_shm_query_version_reply(connection.get(), xcb_shm_query_version(connection.get()), nullptr));
    return version != nullptr;
}
