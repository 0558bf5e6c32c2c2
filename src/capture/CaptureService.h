#pragma once

#include "CaptureServiceInterface.h"
#include "OwnWindows.h"

#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QString>

class ScreenCapturePermission;

// Takes one screenshot at a time by running the vexet-capture helper into a private folder, and
// hands back the image, a cancellation (no image) or an error.
class CaptureService : public QObject, public CaptureServiceInterface {
    Q_OBJECT
public:
    // toolPath: the helper program; by default the one installed beside this program.
    CaptureService(
        ScreenCapturePermission& permission, QString toolPath = defaultToolPath(), QObject* parent = nullptr);
    ~CaptureService() override;

    bool isBusy() const override { return m_isBusy; }
    void capture(CaptureMode mode, std::function<void(CaptureResult)> completion) override;
    void terminateRunning() override;

    QProcess* process() const { return m_process; }
    // Where the private folders are made; temporaryRoot() unless set.
    void setTemporaryRoot(const QString& folder) { m_temporaryRoot = folder; }
    const QString& toolPath() const { return m_toolPath; }

    // The helper's arguments: "-x", "-t", "png", the mode's part, the output path last.
    static QStringList arguments(CaptureMode mode, int displayNumber, const QString& outputPath);
    // 1-based position in QGuiApplication::screens() of the first screen under the pointer, else 1.
    static int displayNumberUnderPointer();
    // Where the private folders go: $XDG_RUNTIME_DIR when set, else the temporary folder.
    static QString temporaryRoot();
    static QString defaultToolPath();
    // The error of a screen capture that produced no image.
    static Error noImageError(int exitStatus);

private:
    void launch(CaptureMode mode, int displayNumber);
    void toolFinished(CaptureMode mode, int exitStatus);
    void deliver(CaptureMode mode, int exitStatus, std::optional<QImage> image);
    void fail(const QString& reason);
    void showPermissionAlert();

    ScreenCapturePermission& m_permission;
    QString m_toolPath;
    QPointer<QProcess> m_process;
    bool m_isBusy = false;
    QString m_temporaryRoot = temporaryRoot();
    QString m_folder;
    OwnWindows m_windows;
    std::function<void(CaptureResult)> m_completion;
};
