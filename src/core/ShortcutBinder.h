#pragma once

// Who decides which key combination starts a command.
enum class ShortcutBinder {
    // Vexet takes the stored combinations for the whole desktop itself (X11).
    program,
    // The desktop binds them; the stored combinations are only proposed (the GlobalShortcuts portal).
    desktop,
    // The desktop offers neither: the user binds the `vexet --capture …` commands in its settings.
    user,
};
