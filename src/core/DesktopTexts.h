#pragma once

#include <QString>

// What the program's fixed texts may say about the desktop they are shown on.
struct DesktopFacts {
    // A Wayland session: pictures come through the desktop's portal.
    bool wayland = false;
    // A system tray shows Vexet's icon; without one the Vexet window offers the commands.
    bool tray = true;
};

// The fixed texts that name a place of the desktop, each in the form that is true where the program
// runs: the tray or the Vexet window instead of a menu bar, the desktop's own permission instead of
// another system's settings.
namespace DesktopTexts {

// Where the commands are, in the about and welcome window.
QString howToCapture(const DesktopFacts& facts);
// What happens to pictures and what the desktop may ask, in the about and welcome window.
QString privacy(const DesktopFacts& facts);
// The launch alert's lead before the shortcuts that could not be registered.
QString shortcutFailuresLead(const DesktopFacts& facts);
// The launch alert's lead before the commands the desktop left without a key.
QString unboundCommandsLead();
// Where the desktop's own settings for Vexet's shortcuts are, where Vexet cannot open them itself.
QString desktopShortcutsPlace();
// The launch alert, shown once, of a desktop that lets no program take keys: bind the commands.
QString bindCommandsYourself();
// The permission alert's explanation when the desktop refused a picture: where to allow it.
QString screenshotPermission();
// The Vexet window's one sentence on why it is there.
QString noTray();

} // namespace DesktopTexts
