#pragma once

#include "X11Input.h"

#include <QString>

// Text typed with real keys, as a hand types it into a field.
class VideoKeyboard {
public:
    // Types printable ASCII text key by key, with Shift where the server's layout needs it for
    // the character (capitals, "_", ...). False if a character has no key.
    static bool typeText(X11Input& input, const QString& text);
};
