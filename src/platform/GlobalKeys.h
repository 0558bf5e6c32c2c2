#pragma once

#include <QtGlobal>
#include <functional>

// System-wide key combinations: grabbed for an id, and their presses reported by that id.
class GlobalKeys {
public:
    virtual ~GlobalKeys() = default;

    // Grabs the combination of a portable key code and a modifier mask (the Shortcut encoding)
    // for id. 0 on success; otherwise a negative status and nothing is left grabbed for id.
    virtual int grab(quint32 keyCode, quint32 modifiers, int id) = 0;
    virtual void ungrab(int id) = 0;

    // Called when a grabbed combination is pressed, inside the platform's event handling.
    std::function<void(int id)> onPressed;
};
