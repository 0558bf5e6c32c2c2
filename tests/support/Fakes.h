#pragma once

#include "CaptureServiceInterface.h"
#include "HotKeysInterface.h"
#include "Preferences.h"
#include "VideoSideInterface.h"

#include <QHash>
#include <QList>

// Stand-ins for the application's neighbours, recording what the application asks of them.

class FakeCaptureService : public CaptureServiceInterface {
public:
    bool isBusy() const override { return busy; }
    void capture(CaptureMode mode, std::function<void(CaptureResult)> done) override
    {
        requests.append(mode);
        completion = std::move(done);
    }
    void terminateRunning() override { ++terminations; }

    bool busy = false;
    QList<CaptureMode> requests;
    std::function<void(CaptureResult)> completion;
    int terminations = 0;
};

// A registry whose answers the test gives: at once where the program binds, or later through
// answer() like a desktop.
class FakeHotKeys : public HotKeysInterface {
public:
    ShortcutBinder binder() const override { return binderNow; }
    int registerShortcut(const Shortcut&, CaptureMode) override { return 0; }
    void suspend() override { }
    QStringList resume() override
    {
        ++resumes;
        return failures;
    }
    bool settled() const override { return isSettled; }
    // The stored combination when preferences are given, as where the program binds.
    QString label(CaptureMode mode) const override
    {
        return preferences ? preferences->shortcut(mode).display() : labels.value(mode);
    }
    bool canConfigure() const override { return configurable; }
    void configure() override { ++configures; }

    // The desktop answers (or changes its mind): labels and binder as given now.
    void answer()
    {
        isSettled = true;
        if (onChanged)
            onChanged();
    }

    ShortcutBinder binderNow = ShortcutBinder::program;
    bool isSettled = true;
    const Preferences* preferences = nullptr;
    QHash<CaptureMode, QString> labels;
    bool configurable = false;
    QStringList failures;
    int resumes = 0;
    int configures = 0;
};

class FakeVideoSide : public VideoSideInterface {
public:
    void toggle() override { ++toggles; }
    bool recorderIdle() const override { return idle; }
    bool selecting() const override { return isSelecting; }
    bool sheetOpen() const override { return isSheetOpen; }
    bool loading() const override { return isLoading; }
    void setPendingQuit(bool pending) override { pendingQuit = pending; }
    void stopRecorder() override { ++stops; }

    int toggles = 0;
    bool idle = true;
    bool isSelecting = false;
    bool isSheetOpen = false;
    bool isLoading = false;
    bool pendingQuit = false;
    int stops = 0;
};
