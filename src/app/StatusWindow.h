#pragma once

#include "CaptureMode.h"

#include <QHash>
#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

// The tray menu's commands in a small window, for a desktop without a system tray (stock GNOME):
// one button per capture command with its shortcut, then settings, about and quit, and one sentence
// on why the window is there. It shows the recording's time as the tray's tooltip would. Closing it
// does not quit.
class StatusWindow : public QWidget {
    Q_OBJECT
public:
    struct Actions {
        std::function<void(CaptureMode)> capture;
        std::function<void()> openSettings;
        std::function<void()> openAbout;
        std::function<void()> quit;
    };

    explicit StatusWindow(const Actions& actions, QWidget* parent = nullptr);

    // The command's title as the menu item shows it (with its shortcut).
    void setTitle(CaptureMode mode, const QString& title);
    // The recording's state: the text under the buttons while busy, none otherwise.
    void setStatus(bool busy, const QString& text);
    void showWindow();

    QPushButton* button(CaptureMode mode) const { return m_buttons.value(mode); }
    QLabel* statusLabel() const { return m_status; }

private:
    QHash<CaptureMode, QPushButton*> m_buttons;
    QLabel* m_status = nullptr;
};
