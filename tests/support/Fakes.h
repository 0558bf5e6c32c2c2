#pragma once

#include "CaptureServiceInterface.h"
#include "HotKeysInterface.h"
#include "VideoSideInterface.h"

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

class FakeHotKeys : public HotKeysInterface {
public:
    int registerShortcut(const Shortcut&, CaptureMode) override { return 0; }
    void suspend() override { }
    QStringList resume() override
    {
        ++resumes;
        return failures;
    }

    QStringList failures;
    int resumes = 0;
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
