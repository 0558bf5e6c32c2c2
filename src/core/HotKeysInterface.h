#pragma once

#include "CaptureMode.h"
#include "Shortcut.h"

#include <QStringList>
#include <functional>

// What the application and the settings window need from the global shortcut registry.
class HotKeysInterface {
public:
    virtual ~HotKeysInterface() = default;

    // (Re)registers one mode; 0 on success, otherwise the platform's status.
    virtual int registerShortcut(const Shortcut& shortcut, CaptureMode mode) = 0;
    virtual void suspend() = 0;
    // Registers all four modes from the stored preferences; one line per failure.
    virtual QStringList resume() = 0;

    // Called on the main thread, through the event loop, when a registered combination is pressed.
    std::function<void(CaptureMode)> onCapture;
};
