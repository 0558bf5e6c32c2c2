#include "BellCounter.h"

#define explicit explicit_ // the generated xkb header names a struct member "explicit"
#include <xcb/xkb.h>
#undef explicit

#include <cstdlib>

BellCounter::BellCounter()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    xcb_connection_t* connection = m_connection.get();
    if (xcb_connection_has_error(connection))
        return;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_xkb_id);
    if (!extension || !extension->present)
        return;
    m_xkbEvent = extension->first_event;
    xcb_xkb_use_extension_reply_t* use = xcb_xkb_use_extension_reply(
        connection, xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION), nullptr);
    const bool supported = use && use->supported;
    std::free(use);
    if (!supported)
        return;
    xcb_generic_error_t* error = xcb_request_check(connection,
        xcb_xkb_select_events_checked(connection, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_EVENT_TYPE_BELL_NOTIFY, 0,
            XCB_XKB_EVENT_TYPE_BELL_NOTIFY, 0, 0, nullptr));
    m_ready = error == nullptr;
    std::free(error);
}

BellCounter::~BellCounter() = default;

int BellCounter::count()
{
    if (!m_ready)
        return 0;
    while (xcb_generic_event_t* event = xcb_poll_for_event(m_connection.get())) {
        // Every XKB event shares one event code; the kind is in the byte after it.
        const auto* xkb = reinterpret_cast<const xcb_xkb_bell_notify_event_t*>(event);
        if ((xkb->response_type & 0x7f) == m_xkbEvent && xkb->xkbType == XCB_XKB_BELL_NOTIFY)
            ++m_count;
        std::free(event);
    }
    return m_count;
}

int BellCounter::settledCount()
{
    if (m_ready) {
        // A round trip: events the server sent before its reply are queued once the reply is here.
        std::free(
            xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
    }
    return count();
}
