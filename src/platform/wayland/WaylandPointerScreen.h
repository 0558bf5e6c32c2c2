#pragma once

#include "PointerScreen.h"

// A Wayland client learns nothing of the pointer outside its own windows: the helper takes the
// monitor under the pointer itself.
class WaylandPointerScreen : public PointerScreen {
public:
    std::optional<int> displayNumberUnderPointer() const override { return std::nullopt; }
};
