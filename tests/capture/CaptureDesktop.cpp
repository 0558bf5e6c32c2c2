#include "CaptureDesktop.h"

#include <QTest>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

CaptureDesktop::CaptureDesktop()
    : m_windows(m_connection)
    , m_input(m_connection)
{
}

QRect CaptureDesktop::rootRect() const
{
    const xcb_screen_t* screen = m_connection.screen();
    return screen ? QRect(0, 0, screen->width_in_pixels, screen->height_in_pixels) : QRect();
}

bool CaptureDesktop::waitForPixels(const QRect& rootRect, const QImage& expected, int milliseconds)
{
    return QTest::qWaitFor([&] { return m_windows.grab(rootRect) == expected; }, milliseconds);
}

QImage CaptureDesktop::stableGrab(const QRect& rootRect)
{
    QImage previous;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QImage current = m_windows.grab(rootRect);
        if (!current.isNull() && current == previous)
            return current;
        previous = current;
        QTest::qWait(100);
    }
    return {};
}

bool CaptureDesktop::pointerHeldElsewhere()
{
    xcb_connection_t* c = m_connection.get();
    XcbReply<xcb_grab_pointer_reply_t> reply(xcb_grab_pointer_reply(c,
        xcb_grab_pointer(c, 0, m_connection.root(), XCB_EVENT_MASK_NO_EVENT, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_TIME_CURRENT_TIME),
        nullptr));
    if (reply && reply->status == XCB_GRAB_STATUS_SUCCESS) {
        xcb_ungrab_pointer(c, XCB_TIME_CURRENT_TIME);
        m_connection.flush();
        return false;
    }
    return reply && reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

bool CaptureDesktop::waitForPointerHeldElsewhere(int milliseconds)
{
    // Slowly: every try of ours is a moment in which the tool cannot take the pointer.
    return QTest::qWaitFor(
        [this] {
            if (pointerHeldElsewhere())
                return true;
            QTest::qWait(150);
            return false;
        },
        milliseconds);
}

bool CaptureDesktop::holdInput()
{
    xcb_connection_t* c = m_connection.get();
    XcbReply<xcb_grab_pointer_reply_t> pointer(xcb_grab_pointer_reply(c,
        xcb_grab_pointer(c, 0, m_connection.root(), XCB_EVENT_MASK_NO_EVENT, XCB_GRAB_MODE_ASYNC,
            XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_TIME_CURRENT_TIME),
        nullptr));
    XcbReply<xcb_grab_keyboard_reply_t> keyboard(xcb_grab_keyboard_reply(c,
        xcb_grab_keyboard(
            c, 0, m_connection.root(), XCB_TIME_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
        nullptr));
    return pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS && keyboard
        && keyboard->status == XCB_GRAB_STATUS_SUCCESS;
}

void CaptureDesktop::releaseInput()
{
    xcb_ungrab_pointer(m_connection.get(), XCB_TIME_CURRENT_TIME);
    xcb_ungrab_keyboard(m_connection.get(), XCB_TIME_CURRENT_TIME);
    XcbReply<xcb_get_input_focus_reply_t> sync(
        xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
}

void CaptureDesktop::tapKey(quint32 keysym)
{
    xcb_connection_t* c = m_connection.get();
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(c);
    xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, keysym);
    const xcb_keycode_t code = codes ? codes[0] : XCB_NO_SYMBOL;
    std::free(codes);
    xcb_key_symbols_free(symbols);
    QVERIFY2(code != XCB_NO_SYMBOL, "the keyboard map has no key for the keysym");
    xcb_test_fake_input(c, XCB_KEY_PRESS, code, 0, XCB_NONE, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_RELEASE, code, 30, XCB_NONE, 0, 0, 0);
    XcbReply<xcb_get_input_focus_reply_t> sync(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
}

void CaptureDesktop::drag(const QPoint& from, const QPoint& to)
{
    m_input.movePointer(from);
    m_input.pause(60);
    m_input.pressButton(1);
    for (int step = 1; step <= 4; ++step) {
        m_input.pause(40);
        m_input.movePointer(from + (to - from) * step / 5);
    }
    m_input.pause(40);
    m_input.movePointer(to);
    m_input.pause(60);
    m_input.releaseButton(1);
}

std::optional<QRect> CaptureDesktop::frameOf(xcb_window_t client)
{
    xcb_window_t window = client;
    for (std::optional<xcb_window_t> parent = m_windows.parent(window);
         parent && *parent != m_connection.root(); parent = m_windows.parent(window)) {
        if (*parent == XCB_NONE)
            return std::nullopt;
        window = *parent;
    }
    XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr));
    if (!geometry)
        return std::nullopt;
    const int border = geometry->border_width;
    return QRect(geometry->x, geometry->y, geometry->width + 2 * border, geometry->height + 2 * border);
}

QList<xcb_window_t> CaptureDesktop::clientsOf(qint64 pid)
{
    QList<xcb_window_t> result;
    const QList<xcb_window_t> clients = m_windows.clientsStacking();
    for (xcb_window_t client : clients) {
        if (m_windows.pid(client) == static_cast<quint32>(pid) && m_windows.isViewable(client))
            result.append(client);
    }
    return result;
}
