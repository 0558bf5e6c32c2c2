#pragma once

#include "CaptureMode.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <optional>

class QKeyEvent;

// One global key combination. keyCode is the portable key number (the Mac virtual key code, see
// KeyTable); modifiers uses the four mask bits below and nothing else.
struct Shortcut {
    static constexpr quint32 cmdKey = 0x100; // Super
    static constexpr quint32 shiftKey = 0x200;
    static constexpr quint32 optionKey = 0x800; // Alt
    static constexpr quint32 controlKey = 0x1000;

    quint32 keyCode = 0;
    quint32 modifiers = 0;
    QString keyLabel;

    // "⌃⌥⇧⌘" in that order, each only when its bit is set, then the key label.
    QString display() const;

    // {"keyCode":…,"modifiers":…,"keyLabel":…}; decoding fails when any of the three is missing or
    // has the wrong type.
    QByteArray toJson() const;
    static std::optional<Shortcut> fromJson(const QByteArray& json);

    // The combination of a key press, or none when it is not a valid shortcut (no Ctrl, Alt or
    // Super; a bare modifier key; a key without a portable number).
    static std::optional<Shortcut> from(const QKeyEvent& event);

    static Shortcut defaultShortcut(CaptureMode mode);

    // The Qt keys of the modifier keys themselves (Shift, Ctrl, Alt, Super, Caps Lock, ...).
    static bool isModifierKey(int qtKey);

    // Two shortcuts clash when key and modifiers agree; the label plays no part.
    friend bool operator==(const Shortcut& a, const Shortcut& b)
    {
        return a.keyCode == b.keyCode && a.modifiers == b.modifiers;
    }
};
