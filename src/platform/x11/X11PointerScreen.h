#pragma once

#include "PointerScreen.h"

// On X11 every client may ask where the pointer is: the first screen that holds it, else 1.
class X11PointerScreen : public PointerScreen {
public:
    std::optional<int> displayNumberUnderPointer() const override;
};
