#include "CaptureService.h"

#include "Alert.h"
#include "Beeper.h"
#include "CaptureToolProtocol.h"
#include "DesktopTexts.h"
#include "PointerScreen.h"
#include "ScreenCapturePermission.h"

#include <QCoreApplication>
#include <QDir>
#include <QImageReader>
#include <QThreadPool>
#include <QTimer>
#include <QUuid>
#include <cerrno>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int hideDelayMs = 300; // the hidden windows are really gone before the helper starts
const QString fileName = u"capture.png"_s;

} // namespace

CaptureService::CaptureService(
    ScreenCapturePermission& permission, const PointerScreen& pointer, QString toolPath, QObject* parent)
    : QObject(parent)
    , m_permission(permission)
    , m_pointer(pointer)
    , m_toolPath(std::move(toolPath))
{
}

CaptureService::~CaptureService()
{
    terminateRunning();
}

QString CaptureService::defaultToolPath()
{
    return QCoreApplication::applicationDirPath() + u"/vexet-capture"_s;
}

QString CaptureService::temporaryRoot()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !runtime.isEmpty() && QFileInfo(runtime).isDir() ? runtime : QDir::tempPath();
}

Error CaptureService::noImageError(int exitStatus)
{
    return Error(u"Vexet"_s, exitStatus,
        u"Ekran resmi alınamadı. Ekran kaydı iznini kontrol et ve Vexet’i yeniden aç."_s);
}

void CaptureService::capture(CaptureMode mode, std::function<void(CaptureResult)> completion)
{
    if (mode == CaptureMode::video)
        return;
    if (m_isBusy) {
        Beeper::beep();
        return;
    }
    if (!m_permission.preflight()) {
        m_permission.request();
        showPermissionAlert();
        return;
    }
    m_isBusy = true;
    m_completion = std::move(completion);
    m_windows.hide();

    // A private folder, readable by this user only, never reused.
    const QString folder
        = m_temporaryRoot + u"/Vexet-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0) {
        const QString reason = qt_error_string(errno);
        m_isBusy = false;
        m_windows.show();
        fail(reason);
        return;
    }
    m_folder = folder;
    const std::optional<int> display = m_pointer.displayNumberUnderPointer();
    QTimer::singleShot(hideDelayMs, this, [this, mode, display] { launch(mode, display); });
}

void CaptureService::launch(CaptureMode mode, std::optional<int> displayNumber)
{
    auto* process = new QProcess(this);
    process->setProgram(m_toolPath);
    process->setArguments(CaptureToolProtocol::arguments(mode, displayNumber, m_folder + u'/' + fileName));
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    // The helper's files are for this user only.
    process->setChildProcessModifier([] { ::umask(077); });
    connect(process, &QProcess::finished, this, [this, mode](int exitCode, QProcess::ExitStatus status) {
        toolFinished(mode, status == QProcess::CrashExit ? crashed : exitCode);
    });
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart || m_process != process)
            return;
        const QString reason = process->errorString();
        m_process = nullptr;
        process->deleteLater();
        m_isBusy = false;
        QDir(std::exchange(m_folder, {})).removeRecursively();
        m_windows.show();
        fail(reason);
    });
    m_process = process;
    process->start();
}

void CaptureService::toolFinished(CaptureMode mode, int exitStatus)
{
    const QString folder = std::exchange(m_folder, {});
    // Reading, decoding and removing happen off the main thread; the result comes back to it.
    QPointer<CaptureService> self(this);
    QThreadPool::globalInstance()->start([self, folder, mode, exitStatus] {
        QImageReader reader(folder + u'/' + fileName);
        std::optional<QImage> image;
        if (QImage read = reader.read(); !read.isNull())
            image = std::move(read);
        QDir(folder).removeRecursively();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, mode, exitStatus, image = std::move(image)] {
                if (self)
                    self->deliver(mode, exitStatus, image);
            },
            Qt::QueuedConnection);
    });
}

void CaptureService::deliver(CaptureMode mode, int exitStatus, std::optional<QImage> image)
{
    if (m_process)
        m_process->deleteLater();
    m_process = nullptr;
    m_isBusy = false;
    m_windows.show();
    auto completion = std::exchange(m_completion, {});
    if (!completion)
        return;
    if (image) {
        completion(CaptureResult(std::move(image)));
    } else if (exitStatus == static_cast<int>(CaptureExitStatus::refused)) {
        // The desktop said no: tell where to allow it; there is nothing else to report.
        showPermissionAlert();
        completion(CaptureResult(std::optional<QImage>()));
    } else if (mode != CaptureMode::screen && exitStatus == static_cast<int>(CaptureExitStatus::cancelled)) {
        completion(CaptureResult(std::optional<QImage>())); // the user cancelled the selection
    } else {
        completion(noImageError(exitStatus));
    }
}

void CaptureService::fail(const QString& reason)
{
    if (auto completion = std::exchange(m_completion, {}))
        completion(Error(u"Vexet"_s, 1, reason));
}

void CaptureService::terminateRunning()
{
    QProcess* process = m_process;
    if (!process || process->state() == QProcess::NotRunning)
        return;
    process->disconnect(this);
    process->terminate();
    if (!process->waitForFinished(1000))
        process->kill();
    if (!m_folder.isEmpty())
        QDir(std::exchange(m_folder, {})).removeRecursively();
}

void CaptureService::showPermissionAlert()
{
    // "Ayarları aç" only where the desktop has a settings program to open.
    const bool settings = m_permission.canOpenSettings();
    QStringList buttons { u"Daha sonra"_s };
    if (settings)
        buttons.prepend(u"Ayarları aç"_s);
    if (Alert::ask(u"Ekran kaydı izni gerekli"_s, DesktopTexts::screenshotPermission(), buttons) == 0
        && settings)
        m_permission.openSettings();
}
