#include "X11GlobalKeys.h"

#include "KeyTable.h"
#include "Shortcut.h"
#include "X11Connection.h"

#include <QCoreApplication>
#include <X11/keysym.h>
#include <xcb/xcb_keysyms.h>

namespace {

struct KeySymbolsFree {
    void operator()(xcb_key_symbols_t* symbols) const { xcb_key_symbols_free(symbols); }
};

// All keycodes that carry the keysym in the server's current keyboard mapping.
QList<xcb_keycode_t> keycodesOf(xcb_connection_t* connection, xcb_keysym_t keysym)
{
    std::unique_ptr<xcb_key_symbols_t, KeySymbolsFree> symbols(xcb_key_symbols_alloc(connection));
    QList<xcb_keycode_t> result;
    if (!symbols)
        return result;
    std::unique_ptr<xcb_keycode_t, XcbFree> codes(xcb_key_symbols_get_keycode(symbols.get(), keysym));
    for (const xcb_keycode_t* code = codes.get(); code && *code != XCB_NO_SYMBOL; ++code)
        result.append(*code);
    return result;
}

} // namespace

X11GlobalKeys::X11GlobalKeys(xcb_connection_t* connection, xcb_window_t root)
    : m_connection(connection)
    , m_root(root)
{
    if (QCoreApplication* app = QCoreApplication::instance())
        app->installNativeEventFilter(this);
}

X11GlobalKeys::~X11GlobalKeys()
{
    const QList<int> ids = m_grabs.keys();
    for (int id : ids)
        ungrab(id);
    if (QCoreApplication* app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
}

X11GlobalKeys::ModifierBits X11GlobalKeys::modifierBits() const
{
    ModifierBits bits;
    XcbReply<xcb_get_modifier_mapping_reply_t> mapping(
        xcb_get_modifier_mapping_reply(m_connection, xcb_get_modifier_mapping(m_connection), nullptr));
    if (!mapping)
        return bits;
    const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(mapping.get());
    const int perModifier = mapping->keycodes_per_modifier;
    const auto bitOf = [&](xcb_keysym_t keysym) -> uint16_t {
        const QList<xcb_keycode_t> wanted = keycodesOf(m_connection, keysym);
        for (int modifier = 0; modifier < 8; ++modifier) {
            for (int i = 0; i < perModifier; ++i) {
                if (wanted.contains(codes[modifier * perModifier + i]))
                    return static_cast<uint16_t>(1u << modifier);
            }
        }
        return 0;
    };
    if (const uint16_t bit = bitOf(XK_Super_L))
        bits.super = bit;
    if (const uint16_t bit = bitOf(XK_Alt_L))
        bits.alt = bit;
    if (const uint16_t bit = bitOf(XK_Num_Lock))
        bits.numLock = bit;
    return bits;
}

void X11GlobalKeys::bind(const QList<Request>& requests)
{
    QList<Binding> bindings;
    for (const Request& request : requests)
        bindings.append({ request.id, grab(request.keyCode, request.modifiers, request.id), {} });
    if (onBound)
        onBound(bindings);
}

QList<uint16_t> X11GlobalKeys::lockVariants(const ModifierBits& bits) const
{
    return { 0, XCB_MOD_MASK_LOCK, bits.numLock, static_cast<uint16_t>(XCB_MOD_MASK_LOCK | bits.numLock) };
}

int X11GlobalKeys::grab(quint32 keyCode, quint32 modifiers, int id)
{
    ungrab(id);
    const std::optional<KeyInfo> key = KeyTable::byKeyCode(keyCode);
    const QList<xcb_keycode_t> keycodes
        = key && key->keysym ? keycodesOf(m_connection, key->keysym) : QList<xcb_keycode_t>();
    if (keycodes.isEmpty())
        return -XCB_VALUE; // no key of the current layout carries it

    m_bits = modifierBits();
    const ModifierBits& bits = m_bits;
    uint16_t mask = 0;
    if (modifiers & Shortcut::controlKey)
        mask |= XCB_MOD_MASK_CONTROL;
    if (modifiers & Shortcut::optionKey)
        mask |= bits.alt;
    if (modifiers & Shortcut::shiftKey)
        mask |= XCB_MOD_MASK_SHIFT;
    if (modifiers & Shortcut::cmdKey)
        mask |= bits.super;

    QList<xcb_void_cookie_t> cookies;
    for (xcb_keycode_t keycode : keycodes) {
        for (uint16_t lock : lockVariants(bits)) {
            cookies.append(xcb_grab_key_checked(m_connection, 1, m_root, static_cast<uint16_t>(mask | lock),
                keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        }
    }
    int status = 0;
    for (xcb_void_cookie_t cookie : cookies) {
        XcbReply<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie));
        if (error && status == 0)
            status = -static_cast<int>(error->error_code);
    }
    QList<Grab>& grabs = m_grabs[id];
    for (xcb_keycode_t keycode : keycodes)
        grabs.append({ keycode, mask });
    if (status != 0)
        ungrab(id); // a combination is grabbed whole or not at all
    return status;
}

void X11GlobalKeys::ungrab(int id)
{
    const QList<Grab> grabs = m_grabs.take(id);
    if (grabs.isEmpty())
        return;
    for (const Grab& grab : grabs) {
        for (uint16_t lock : lockVariants(m_bits))
            xcb_ungrab_key(m_connection, grab.keycode, m_root, static_cast<uint16_t>(grab.modifiers | lock));
    }
    xcb_flush(m_connection);
}

bool X11GlobalKeys::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t" || m_grabs.isEmpty())
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != XCB_KEY_PRESS)
        return false;
    const auto* press = static_cast<const xcb_key_press_event_t*>(message);
    if (press->event != m_root)
        return false;
    const uint16_t relevant = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT | m_bits.alt | m_bits.super;
    const uint16_t state = press->state & relevant;
    for (auto it = m_grabs.cbegin(); it != m_grabs.cend(); ++it) {
        for (const Grab& grab : it.value()) {
            if (grab.keycode == press->detail && grab.modifiers == state) {
                if (onPressed)
                    onPressed(it.key());
                return true;
            }
        }
    }
    return false;
}
