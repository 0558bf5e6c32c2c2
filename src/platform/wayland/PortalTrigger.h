#pragma once

#include <QString>
#include <QtGlobal>

// A Shortcut's combination in the trigger syntax of the desktop portals' shortcuts: the modifier
// names CTRL, ALT, SHIFT and LOGO in that order, then the key's XKB keysym name, joined by '+'
// ("ALT+SHIFT+LOGO+3"). The key is named by its unshifted symbol, as the modifiers say the rest.
namespace PortalTrigger {

// Empty when the key has no keysym (a key code the key table does not know).
QString fromShortcut(quint32 keyCode, quint32 modifiers);

} // namespace PortalTrigger
