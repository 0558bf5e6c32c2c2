#pragma once

#include "CaptureServiceInterface.h"
#include "OwnWindows.h"

#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QString>

class PointerScreen;
class ScreenCapturePermission;

// Takes one screenshot at a time by running the vexet-capture helper into a private folder, and
// hands back the image, a cancellation (no image) or an error. The helper's exit status tells a
// cancel from a failure (CaptureToolProtocol.h): a failure or a crash is reported in every mode, and
// a desktop that refused the picture brings up the permission alert.
class CaptureService : public QObject, public CaptureServiceInterface {
    Q_OBJECT
public:
    // toolPath: the helper program; by default the one installed beside this program.
    CaptureService(ScreenCapturePermission& permission, const PointerScreen& pointer,
        QString toolPath = defaultToolPath(), QObject* parent = nullptr);
    ~CaptureService() override;

    bool isBusy() const override { return m_isBusy; }
    void capture(CaptureMode mode, std::function<void(CaptureResult)> completion) override;
    void terminateRunning() override;

    QProcess* process() const { return m_process; }
    // Where the private folders are made; temporaryRoot() unless set.
    void setTemporaryRoot(const QString& folder) { m_temporaryRoot = folder; }
    const QString& toolPath() const { return m_toolPath; }

    // Where the private folders go: $XDG_RUNTIME_DIR when set, else the temporary folder.
    static QString temporaryRoot();
    static QString defaultToolPath();
    // The error of a capture that produced no image for another reason than the user's choice.
    static Error noImageError(int exitStatus);
    // The exit status counted for a helper that crashed.
    static constexpr int crashed = -1;

private:
    void launch(CaptureMode mode, std::optional<int> displayNumber);
    void toolFinished(CaptureMode mode, int exitStatus);
    void deliver(CaptureMode mode, int exitStatus, std::optional<QImage> image);
    void fail(const QString& reason);
    void showPermissionAlert();

    ScreenCapturePermission& m_permission;
    const PointerScreen& m_pointer;
    QString m_toolPath;
    QPointer<QProcess> m_process;
    bool m_isBusy = false;
    QString m_temporaryRoot = temporaryRoot();
    QString m_folder;
    OwnWindows m_windows;
    std::function<void(CaptureResult)> m_completion;
};
