#include "VideoKeyboard.h"

#include <X11/keysym.h>
#include <xcb/xcb_keysyms.h>

bool VideoKeyboard::typeText(X11Input& input, const QString& text)
{
    X11Connection connection;
    if (!connection.isOpen())
        return false;
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection.get());
    if (!symbols)
        return false;
    bool typed = true;
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code < 0x20 || code > 0x7e) { // printable ASCII, whose keysyms are the character codes
            typed = false;
            break;
        }
        const xcb_keysym_t keysym = code;
        XcbReply<xcb_keycode_t> keycodes(xcb_key_symbols_get_keycode(symbols, keysym));
        if (!keycodes || keycodes.get()[0] == XCB_NO_SYMBOL) {
            typed = false;
            break;
        }
        // The first column of a key is what it types alone; anything else needs Shift.
        const bool alone = xcb_key_symbols_get_keysym(symbols, keycodes.get()[0], 0) == keysym;
        typed = (alone ? input.typeCombination({ keysym }) : input.typeCombination({ XK_Shift_L, keysym }))
            && typed;
    }
    xcb_key_symbols_free(symbols);
    return typed;
}
