#pragma once

#include "HotKeysInterface.h"

// A registry that accepts everything, for laying out the settings window in the test process.
class FakeHotKeysForLayout : public HotKeysInterface {
public:
    ShortcutBinder binder() const override { return ShortcutBinder::program; }
    int registerShortcut(const Shortcut&, CaptureMode) override { return 0; }
    void suspend() override { }
    QStringList resume() override { return {}; }
    bool settled() const override { return true; }
    QString label(CaptureMode) const override { return {}; }
    bool canConfigure() const override { return false; }
    void configure() override { }
};
