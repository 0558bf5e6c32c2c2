#pragma once

#include <QString>
#include <QStringList>

// The settings program of the desktop the session runs, where the user allows screenshots for an
// application: GNOME's privacy settings, KDE Plasma's system settings. Desktops without one (sway,
// other wlroots desktops) have none.
class DesktopSettings {
public:
    // desktops: $XDG_CURRENT_DESKTOP split at ':'.
    explicit DesktopSettings(const QStringList& desktops = currentDesktops());

    // The command line that opens the place, if the program is installed; empty otherwise.
    QStringList command() const;
    bool open() const;

    static QStringList currentDesktops();

private:
    QStringList m_desktops;
};
