#pragma once

#include <QString>
#include <QtGlobal>
#include <array>
#include <optional>

// The four things Vexet can capture. The raw value is the menu item's data, the hot key's id and the
// suffix of the preference key "shortcut.N".
enum class CaptureMode : quint32 {
    region = 1,
    window = 2,
    screen = 3,
    video = 4,
};

namespace CaptureModes {

inline constexpr std::array<CaptureMode, 4> allCases { CaptureMode::region, CaptureMode::window,
    CaptureMode::screen, CaptureMode::video };

constexpr quint32 rawValue(CaptureMode mode)
{
    return static_cast<quint32>(mode);
}

// Exactly 1...4 give a mode; anything else gives none.
std::optional<CaptureMode> fromRawValue(quint32 rawValue);

// The status-menu title, e.g. "Alan seçerek yakala".
QString title(CaptureMode mode);

} // namespace CaptureModes

size_t qHash(CaptureMode mode, size_t seed = 0) noexcept;
