#pragma once

#include "CaptureMode.h"

#include <QString>
#include <functional>

class QAction;
class QMenu;
class QWidget;

// The tray menu: a disabled "Vexet" header, the four capture commands with their keys, then
// settings, about and quit.
class StatusMenu {
public:
    struct Actions {
        std::function<void(QAction* sender)> captureMenu;
        std::function<void()> openSettings;
        std::function<void()> openAbout;
        std::function<void()> quit;
    };

    // What starts a mode from the keyboard, as shown beside its item; empty for nothing.
    using Labels = std::function<QString(CaptureMode mode)>;

    // A new menu; each capture item carries its mode's raw value.
    static QMenu* build(const Labels& labels, const Actions& actions, QWidget* parent = nullptr);

    // The capture item's title: the mode's title, then five spaces and the label when there is one.
    static QString itemTitle(CaptureMode mode, const QString& label);

    // The capture item of the given mode in a menu built here, or nullptr.
    static QAction* item(QMenu* menu, CaptureMode mode);
};
