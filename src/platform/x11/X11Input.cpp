#include "X11Input.h"

#include <utility>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

X11Input::X11Input(X11Connection& connection)
    : m_connection(connection)
{
    XcbReply<xcb_test_get_version_reply_t> version(xcb_test_get_version_reply(
        m_connection.get(), xcb_test_get_version(m_connection.get(), 2, 1), nullptr));
    m_available = version != nullptr;
}

void X11Input::movePointer(const QPoint& rootPosition)
{
    fake(XCB_MOTION_NOTIFY, 0, rootPosition);
}

void X11Input::pressButton(int button)
{
    fake(XCB_BUTTON_PRESS, static_cast<uint8_t>(button));
}

void X11Input::releaseButton(int button)
{
    fake(XCB_BUTTON_RELEASE, static_cast<uint8_t>(button));
}

void X11Input::pause(int milliseconds)
{
    // XTest holds the next event back for this long, like a hand that takes its time.
    m_delay = static_cast<uint32_t>(milliseconds);
}

void X11Input::click(const QPoint& rootPosition, int button)
{
    movePointer(rootPosition);
    pause(50);
    pressButton(button);
    pause(80);
    releaseButton(button);
}

QPoint X11Input::pointer() const
{
    XcbReply<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
        m_connection.get(), xcb_query_pointer(m_connection.get(), m_connection.root()), nullptr));
    return reply ? QPoint(reply->root_x, reply->root_y) : QPoint();
}

void X11Input::fake(uint8_t type, uint8_t detail, const QPoint& position)
{
    const xcb_window_t root = type == XCB_MOTION_NOTIFY ? m_connection.root() : XCB_NONE;
    const uint32_t delay = std::exchange(m_delay, 0);
    xcb_test_fake_input(m_connection.get(), type, detail, delay, root, static_cast<int16_t>(position.x()),
        static_cast<int16_t>(position.y()), 0);
    // A round trip makes sure the server has taken the event before the caller looks at the result.
    XcbReply<xcb_get_input_focus_reply_t> sync(
        xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
}

uint8_t X11Input::keycodeOf(quint32 keysym) const
{
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(m_connection.get());
    if (!symbols)
        return 0;
    XcbReply<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols, keysym));
    xcb_key_symbols_free(symbols);
    return codes ? codes.get()[0] : 0;
}

bool X11Input::pressKey(quint32 keysym)
{
    const uint8_t keycode = keycodeOf(keysym);
    if (keycode == 0)
        return false;
    fake(XCB_KEY_PRESS, keycode);
    return true;
}

bool X11Input::releaseKey(quint32 keysym)
{
    const uint8_t keycode = keycodeOf(keysym);
    if (keycode == 0)
        return false;
    fake(XCB_KEY_RELEASE, keycode);
    return true;
}

bool X11Input::typeCombination(const QList<quint32>& keysyms)
{
    bool known = true;
    for (quint32 keysym : keysyms) {
        pause(20);
        known = pressKey(keysym) && known;
    }
    for (auto it = keysyms.crbegin(); it != keysyms.crend(); ++it) {
        pause(20);
        known = releaseKey(*it) && known;
    }
    return known;
}
