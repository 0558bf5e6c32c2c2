#pragma once

#include "CaptureMode.h"
#include "Shortcut.h"

#include <QSettings>
#include <memory>

// The user's stored settings. Keeps no cache: every read goes to the store, so a value written by
// one window is seen at once everywhere.
class Preferences {
public:
    explicit Preferences(std::unique_ptr<QSettings> store);

    // The one instance: organisation and application "Vexet", INI under the XDG config folder.
    static Preferences& shared();

    QSettings& defaults() { return *m_defaults; }

    // The stored shortcut of a mode, or its default when absent or unreadable.
    Shortcut shortcut(CaptureMode mode) const;
    void set(const Shortcut& shortcut, CaptureMode mode);

    // true unless a boolean false is stored under "copyAutomatically".
    bool copyAutomatically() const;
    void setCopyAutomatically(bool on);

    bool hasWelcomed() const;
    void setHasWelcomed(bool welcomed);

    // The launch alert that this desktop binds the commands' keys itself has been shown.
    bool hasExplainedCommands() const;
    void setHasExplainedCommands(bool explained);

    static QString shortcutKey(CaptureMode mode);

private:
    std::unique_ptr<QSettings> m_defaults;
};
