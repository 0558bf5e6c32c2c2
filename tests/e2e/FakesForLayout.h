#pragma once

#include "HotKeysInterface.h"

// A registry that accepts everything, for laying out the settings window in the test process.
class FakeHotKeysForLayout : public HotKeysInterface {
public:
    int registerShortcut(const Shortcut&, CaptureMode) override { return 0; }
    void suspend() override { }
    QStringList resume() override { return {}; }
};
