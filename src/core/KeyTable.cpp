#include "KeyTable.h"

#include <Qt>
#include <X11/keysym.h>
#include <array>

namespace KeyTable {

namespace {

// Rows in the order of the portable key numbers. The faces are those of a US layout; keys
// whose label comes from elsewhere (Return, the function keys, ...) have none. The right-hand
// Shift, Alt and Control keys share their Qt key with the left-hand ones, and Fn has neither a
// keysym nor a Qt key, so those rows carry 0 there.
constexpr std::array<KeyInfo, 110> rows { {
    { 0, XK_a, Qt::Key_A, false, u"A" },
    { 1, XK_s, Qt::Key_S, false, u"S" },
    { 2, XK_d, Qt::Key_D, false, u"D" },
    { 3, XK_f, Qt::Key_F, false, u"F" },
    { 4, XK_h, Qt::Key_H, false, u"H" },
    { 5, XK_g, Qt::Key_G, false, u"G" },
    { 6, XK_z, Qt::Key_Z, false, u"Z" },
    { 7, XK_x, Qt::Key_X, false, u"X" },
    { 8, XK_c, Qt::Key_C, false, u"C" },
    { 9, XK_v, Qt::Key_V, false, u"V" },
    { 11, XK_b, Qt::Key_B, false, u"B" },
    { 12, XK_q, Qt::Key_Q, false, u"Q" },
    { 13, XK_w, Qt::Key_W, false, u"W" },
    { 14, XK_e, Qt::Key_E, false, u"E" },
    { 15, XK_r, Qt::Key_R, false, u"R" },
    { 16, XK_y, Qt::Key_Y, false, u"Y" },
    { 17, XK_t, Qt::Key_T, false, u"T" },
    { 18, XK_1, Qt::Key_1, false, u"1" },
    { 19, XK_2, Qt::Key_2, false, u"2" },
    { 20, XK_3, Qt::Key_3, false, u"3" },
    { 21, XK_4, Qt::Key_4, false, u"4" },
    { 22, XK_6, Qt::Key_6, false, u"6" },
    { 23, XK_5, Qt::Key_5, false, u"5" },
    { 24, XK_equal, Qt::Key_Equal, false, u"=" },
    { 25, XK_9, Qt::Key_9, false, u"9" },
    { 26, XK_7, Qt::Key_7, false, u"7" },
    { 27, XK_minus, Qt::Key_Minus, false, u"-" },
    { 28, XK_8, Qt::Key_8, false, u"8" },
    { 29, XK_0, Qt::Key_0, false, u"0" },
    { 30, XK_bracketright, Qt::Key_BracketRight, false, u"]" },
    { 31, XK_o, Qt::Key_O, false, u"O" },
    { 32, XK_u, Qt::Key_U, false, u"U" },
    { 33, XK_bracketleft, Qt::Key_BracketLeft, false, u"[" },
    { 34, XK_i, Qt::Key_I, false, u"I" },
    { 35, XK_p, Qt::Key_P, false, u"P" },
    { 36, XK_Return, Qt::Key_Return, false, nullptr },
    { 37, XK_l, Qt::Key_L, false, u"L" },
    { 38, XK_j, Qt::Key_J, false, u"J" },
    { 39, XK_apostrophe, Qt::Key_Apostrophe, false, u"'" },
    { 40, XK_k, Qt::Key_K, false, u"K" },
    { 41, XK_semicolon, Qt::Key_Semicolon, false, u";" },
    { 42, XK_backslash, Qt::Key_Backslash, false, u"\\" },
    { 43, XK_comma, Qt::Key_Comma, false, u"," },
    { 44, XK_slash, Qt::Key_Slash, false, u"/" },
    { 45, XK_n, Qt::Key_N, false, u"N" },
    { 46, XK_m, Qt::Key_M, false, u"M" },
    { 47, XK_period, Qt::Key_Period, false, u"." },
    { 48, XK_Tab, Qt::Key_Tab, false, nullptr },
    { 49, XK_space, Qt::Key_Space, false, nullptr },
    { 50, XK_grave, Qt::Key_QuoteLeft, false, u"`" },
    { 51, XK_BackSpace, Qt::Key_Backspace, false, nullptr },
    { 53, XK_Escape, Qt::Key_Escape, false, nullptr },
    { 54, XK_Super_R, Qt::Key_Super_R, false, nullptr },
    { 55, XK_Super_L, Qt::Key_Super_L, false, nullptr },
    { 56, XK_Shift_L, Qt::Key_Shift, false, nullptr },
    { 57, XK_Caps_Lock, Qt::Key_CapsLock, false, nullptr },
    { 58, XK_Alt_L, Qt::Key_Alt, false, nullptr },
    { 59, XK_Control_L, Qt::Key_Control, false, nullptr },
    { 60, XK_Shift_R, 0, false, nullptr },
    { 61, XK_Alt_R, 0, false, nullptr },
    { 62, XK_Control_R, 0, false, nullptr },
    { 63, 0, 0, false, nullptr },
    { 64, XK_F17, Qt::Key_F17, false, nullptr },
    { 65, XK_KP_Decimal, Qt::Key_Period, true, u"." },
    { 67, XK_KP_Multiply, Qt::Key_Asterisk, true, u"*" },
    { 69, XK_KP_Add, Qt::Key_Plus, true, u"+" },
    { 71, XK_Num_Lock, Qt::Key_NumLock, true, nullptr },
    { 75, XK_KP_Divide, Qt::Key_Slash, true, u"/" },
    { 76, XK_KP_Enter, Qt::Key_Enter, true, nullptr },
    { 78, XK_KP_Subtract, Qt::Key_Minus, true, u"-" },
    { 79, XK_F18, Qt::Key_F18, false, nullptr },
    { 80, XK_F19, Qt::Key_F19, false, nullptr },
    { 81, XK_KP_Equal, Qt::Key_Equal, true, u"=" },
    { 82, XK_KP_0, Qt::Key_0, true, u"0" },
    { 83, XK_KP_1, Qt::Key_1, true, u"1" },
    { 84, XK_KP_2, Qt::Key_2, true, u"2" },
    { 85, XK_KP_3, Qt::Key_3, true, u"3" },
    { 86, XK_KP_4, Qt::Key_4, true, u"4" },
    { 87, XK_KP_5, Qt::Key_5, true, u"5" },
    { 88, XK_KP_6, Qt::Key_6, true, u"6" },
    { 89, XK_KP_7, Qt::Key_7, true, u"7" },
    { 90, XK_F20, Qt::Key_F20, false, nullptr },
    { 91, XK_KP_8, Qt::Key_8, true, u"8" },
    { 92, XK_KP_9, Qt::Key_9, true, u"9" },
    { 96, XK_F5, Qt::Key_F5, false, nullptr },
    { 97, XK_F6, Qt::Key_F6, false, nullptr },
    { 98, XK_F7, Qt::Key_F7, false, nullptr },
    { 99, XK_F3, Qt::Key_F3, false, nullptr },
    { 100, XK_F8, Qt::Key_F8, false, nullptr },
    { 101, XK_F9, Qt::Key_F9, false, nullptr },
    { 103, XK_F11, Qt::Key_F11, false, nullptr },
    { 105, XK_F13, Qt::Key_F13, false, nullptr },
    { 106, XK_F16, Qt::Key_F16, false, nullptr },
    { 107, XK_F14, Qt::Key_F14, false, nullptr },
    { 109, XK_F10, Qt::Key_F10, false, nullptr },
    { 111, XK_F12, Qt::Key_F12, false, nullptr },
    { 113, XK_F15, Qt::Key_F15, false, nullptr },
    { 114, XK_Insert, Qt::Key_Insert, false, nullptr },
    { 115, XK_Home, Qt::Key_Home, false, nullptr },
    { 116, XK_Prior, Qt::Key_PageUp, false, nullptr },
    { 117, XK_Delete, Qt::Key_Delete, false, nullptr },
    { 118, XK_F4, Qt::Key_F4, false, nullptr },
    { 119, XK_End, Qt::Key_End, false, nullptr },
    { 120, XK_F2, Qt::Key_F2, false, nullptr },
    { 121, XK_Next, Qt::Key_PageDown, false, nullptr },
    { 122, XK_F1, Qt::Key_F1, false, nullptr },
    { 123, XK_Left, Qt::Key_Left, false, nullptr },
    { 124, XK_Right, Qt::Key_Right, false, nullptr },
    { 125, XK_Down, Qt::Key_Down, false, nullptr },
    { 126, XK_Up, Qt::Key_Up, false, nullptr },
} };

struct Alias {
    quint32 from;
    quint32 keyCode;
};

// The shifted symbols of a US layout, which are both the keysym and the Qt key a key press
// reports while Shift is held: "#" stands for the "3" key.
constexpr std::array<Alias, 21> shiftedSymbols { {
    { '~', 50 },
    { '!', 18 },
    { '@', 19 },
    { '#', 20 },
    { '$', 21 },
    { '%', 23 },
    { '^', 22 },
    { '&', 26 },
    { '*', 28 },
    { '(', 25 },
    { ')', 29 },
    { '_', 27 },
    { '+', 24 },
    { '{', 33 },
    { '}', 30 },
    { '|', 42 },
    { ':', 41 },
    { '"', 39 },
    { '<', 43 },
    { '>', 47 },
    { '?', 44 },
} };

// Other keysyms of the same keys: Shift+Tab, Help on keyboards that have it, and the keypad
// with Num Lock off.
constexpr std::array<Alias, 14> keysymAliases { {
    { XK_ISO_Left_Tab, 48 },
    { XK_Help, 114 },
    { XK_KP_Separator, 65 },
    { XK_KP_Delete, 65 },
    { XK_KP_Insert, 82 },
    { XK_KP_End, 83 },
    { XK_KP_Down, 84 },
    { XK_KP_Next, 85 },
    { XK_KP_Left, 86 },
    { XK_KP_Begin, 87 },
    { XK_KP_Right, 88 },
    { XK_KP_Home, 89 },
    { XK_KP_Up, 91 },
    { XK_KP_Prior, 92 },
} };

// Qt reports the keypad with Num Lock off as navigation keys plus the keypad flag.
constexpr std::array<Alias, 12> keypadQtAliases { {
    { Qt::Key_Comma, 65 },
    { Qt::Key_Delete, 65 },
    { Qt::Key_Insert, 82 },
    { Qt::Key_End, 83 },
    { Qt::Key_Down, 84 },
    { Qt::Key_PageDown, 85 },
    { Qt::Key_Left, 86 },
    { Qt::Key_Clear, 87 },
    { Qt::Key_Right, 88 },
    { Qt::Key_Home, 89 },
    { Qt::Key_Up, 91 },
    { Qt::Key_PageUp, 92 },
} };

constexpr std::array<Alias, 2> qtAliases { {
    { Qt::Key_Backtab, 48 },
    { Qt::Key_Help, 114 },
} };

template <std::size_t N> std::optional<KeyInfo> viaAlias(const std::array<Alias, N>& aliases, quint32 from)
{
    for (const Alias& alias : aliases) {
        if (alias.from == from)
            return byKeyCode(alias.keyCode);
    }
    return std::nullopt;
}

} // namespace

std::span<const KeyInfo> all()
{
    return rows;
}

std::optional<KeyInfo> byKeyCode(quint32 keyCode)
{
    for (const KeyInfo& row : rows) {
        if (row.keyCode == keyCode)
            return row;
    }
    return std::nullopt;
}

std::optional<KeyInfo> byKeysym(quint32 keysym)
{
    if (keysym == 0)
        return std::nullopt;
    for (const KeyInfo& row : rows) {
        if (row.keysym == keysym)
            return row;
    }
    // Caps Lock or Shift turn the letters' keysyms into the capitals.
    if (keysym >= XK_A && keysym <= XK_Z)
        return byKeysym(keysym - XK_A + XK_a);
    if (auto row = viaAlias(shiftedSymbols, keysym))
        return row;
    return viaAlias(keysymAliases, keysym);
}

std::optional<KeyInfo> byQtKey(int qtKey, bool keypad)
{
    if (qtKey <= 0)
        return std::nullopt;
    const auto key = static_cast<quint32>(qtKey);
    for (const KeyInfo& row : rows) {
        if (row.qtKey == qtKey && row.keypad == keypad)
            return row;
    }
    if (keypad) {
        if (auto row = viaAlias(keypadQtAliases, key))
            return row;
    }
    if (auto row = viaAlias(shiftedSymbols, key))
        return row;
    if (auto row = viaAlias(qtAliases, key))
        return row;
    // A keypad flag that does not match the row (Qt reports Num Lock without it, and keypad Enter
    // may come without it from synthetic events).
    for (const KeyInfo& row : rows) {
        if (row.qtKey == qtKey)
            return row;
    }
    return std::nullopt;
}

bool isModifierKey(quint32 keyCode)
{
    return keyCode >= 54 && keyCode <= 63;
}

} // namespace KeyTable
