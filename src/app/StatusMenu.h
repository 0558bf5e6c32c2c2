#pragma once

#include "CaptureMode.h"
#include "Shortcut.h"

#include <QString>
#include <functional>

class Preferences;
class QAction;
class QMenu;
class QWidget;

// The tray menu: a disabled "Vexet" header, the four capture commands with their shortcuts, then
// settings, about and quit.
class StatusMenu {
public:
    struct Actions {
        std::function<void(QAction* sender)> captureMenu;
        std::function<void()> openSettings;
        std::function<void()> openAbout;
        std::function<void()> quit;
    };

    // A new menu built from the stored shortcuts; each capture item carries its mode's raw value.
    static QMenu* build(Preferences& preferences, const Actions& actions, QWidget* parent = nullptr);

    // The capture item's title: the mode's title, five spaces, the shortcut's display text.
    static QString itemTitle(CaptureMode mode, const Shortcut& shortcut);

    // The capture item of the given mode in a menu built here, or nullptr.
    static QAction* item(QMenu* menu, CaptureMode mode);
};
