#pragma once

#include <optional>

// Which monitor the pointer is on, where the program can tell by itself. On Wayland no client may
// know where the pointer is outside its own windows: there the screenshot helper finds out with its
// frozen overlay.
class PointerScreen {
public:
    virtual ~PointerScreen() = default;

    // 1-based, in the order of QGuiApplication::screens(); none when only the helper can tell.
    virtual std::optional<int> displayNumberUnderPointer() const = 0;
};
