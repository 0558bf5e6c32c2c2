#pragma once

#include "CaptureMode.h"
#include "Shortcut.h"
#include "ShortcutBinder.h"

#include <QStringList>
#include <functional>

// What the application and the settings window need from the global shortcut registry.
class HotKeysInterface {
public:
    virtual ~HotKeysInterface() = default;

    virtual ShortcutBinder binder() const = 0;

    // (Re)registers one mode; 0 on success, otherwise the platform's status. Only where the
    // program binds keys itself.
    virtual int registerShortcut(const Shortcut& shortcut, CaptureMode mode) = 0;
    virtual void suspend() = 0;
    // Registers all four modes from the stored preferences; one line per failure known at once.
    // Where the desktop binds, its answer comes later: settled() turns true and onChanged is called.
    virtual QStringList resume() = 0;
    // Every registration asked for has been answered.
    virtual bool settled() const = 0;

    // What starts the mode, as the menu shows it; empty when no key does.
    virtual QString label(CaptureMode mode) const = 0;

    // The desktop's own settings for these shortcuts can be opened from the program.
    virtual bool canConfigure() const = 0;
    virtual void configure() = 0;

    // Called on the main thread, through the event loop, when a registered combination is pressed.
    std::function<void(CaptureMode)> onCapture;
    // Called when an answer came after its request, or the desktop changed a binding or the binder.
    std::function<void()> onChanged;
};
