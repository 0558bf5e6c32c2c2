#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>
#include <span>

// The portable key numbers of Shortcut.keyCode (the Mac virtual key codes of an ANSI keyboard)
// with their X11 keysym (the unshifted symbol of the key on a US layout) and their Qt key.
struct KeyInfo {
    quint32 keyCode; // portable key number
    quint32 keysym; // X11 keysym, unshifted
    int qtKey; // Qt::Key
    bool keypad; // the key sits on the numeric keypad
    const char16_t* face; // upper-cased face shown to the user, or nullptr for a key without one
};

namespace KeyTable {

std::span<const KeyInfo> all();

std::optional<KeyInfo> byKeyCode(quint32 keyCode);
// Also accepts the shifted symbol of a US-layout key (numbersign finds the "3" key).
std::optional<KeyInfo> byKeysym(quint32 keysym);
std::optional<KeyInfo> byQtKey(int qtKey, bool keypad);

// Key codes 54...63: the modifier keys themselves (Command, Shift, Caps Lock, Option, Control, Fn).
bool isModifierKey(quint32 keyCode);

} // namespace KeyTable
