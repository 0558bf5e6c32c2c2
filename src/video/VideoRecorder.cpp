#include "VideoRecorder.h"

#include "AudioDevices.h"
#include "BackgroundTask.h"
#include "CapturePlan.h"
#include "ElapsedTime.h"
#include "FragmentedMp4.h"
#include "GstCaptureSession.h"
#include "RecordingCancellation.h"
#include "RecordingFileOps.h"
#include "RecordingFiles.h"
#include "RecordingTexts.h"
#include "VideoFile.h"

#include <QFileInfo>

namespace {

constexpr int countdownSeconds = 3;
constexpr int secondMs = 1000;

} // namespace

VideoRecorder::Backend VideoRecorder::gstreamer()
{
    return { GstCaptureSession::factory(), &AudioDevices::defaultMicrophone, &VideoFile::finishAudio,
        &AudioDevices::defaultOutputMonitor };
}

VideoRecorder::VideoRecorder(RecordingDesktopInterface& desktop, QObject* parent)
    : VideoRecorder(desktop, gstreamer(), parent)
{
}

VideoRecorder::VideoRecorder(RecordingDesktopInterface& desktop, Backend backend, QObject* parent)
    : QObject(parent)
    , m_desktop(desktop)
    , m_backend(std::move(backend))
{
    m_timer.setInterval(secondMs);
    // A coarse timer may fire a little early, which would show a second twice and skip the next.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &VideoRecorder::tick);
}

VideoRecorder::~VideoRecorder()
{
    // Nobody is told any more; what was recorded is kept all the same.
    m_session.reset();
    if (m_state != RecorderState::Idle && !m_finishing)
        rescueStaging(videoError(RecordingTexts::ending()));
    if (m_source)
        m_desktop.release(*m_source);
}

void VideoRecorder::release(const VideoTarget& target)
{
    if (m_source != sourceIdOf(target))
        m_desktop.release(sourceIdOf(target));
}

void VideoRecorder::report(RecorderState state, const QString& text)
{
    m_state = state;
    if (onStatus)
        onStatus(state, text);
}

std::optional<double> VideoRecorder::recordedSeconds() const
{
    return m_session ? m_session->recordedSeconds() : std::nullopt;
}

void VideoRecorder::start(const VideoTarget& target, const VideoOptions& options, const QString& destination)
{
    if (m_state != RecorderState::Idle)
        return;
    m_destination = destination;
    m_source = sourceIdOf(target);
    m_failure.reset();
    m_finishing = false;
    report(RecorderState::Starting, RecordingTexts::preparing());
    const quint64 task = ++m_tasks;
    m_startTask = task;
    m_startCancelled = false;
    QTimer::singleShot(0, this, [this, task, target, options] { runStart(task, target, options); });
}

bool VideoRecorder::cancelled(quint64 task) const
{
    return m_startTask != task || m_startCancelled;
}

void VideoRecorder::runStart(quint64 task, const VideoTarget& target, const VideoOptions& options)
{
    if (m_startTask != task)
        return;
    // The sound server may be slow to answer: its devices are looked up away from the main thread.
    std::function<std::optional<QString>()> microphone
        = options.microphone ? m_backend.defaultMicrophone : nullptr;
    std::function<std::optional<QString>()> output
        = options.systemAudio ? m_backend.defaultOutputMonitor : nullptr;
    BackgroundTask::run<Result<CaptureRequest>>(
        this,
        [microphone, output]() -> Result<CaptureRequest> {
            CaptureRequest request;
            if (microphone) {
                const std::optional<QString> found = microphone();
                if (!found)
                    return videoError(RecordingTexts::noMicrophone());
                request.microphone = *found;
            }
            if (output)
                request.systemAudio = output().value_or(QString());
            return request;
        },
        [this, task, target, options](const Result<CaptureRequest>& devices) {
            if (m_startTask != task)
                return;
            if (std::optional<Error> error = prepareCapture(task, target, options, devices))
                startFailed(*error);
        });
}

std::optional<Error> VideoRecorder::prepareCapture(quint64 task, const VideoTarget& target,
    const VideoOptions& options, const Result<CaptureRequest>& devices)
{
    if (options.fps < 1)
        qFatal("VideoRecorder: %d frames per second", options.fps);
    if (cancelled(task))
        return RecordingCancellation::error();
    if (!devices)
        return devices.error();
    CaptureRequest request = devices.value();
    const Result<CaptureArea> area = CapturePlan::resolve(target, m_desktop);
    if (!area)
        return area.error();
    request.area = area.value();
    request.options = options;
    request.frameSize
        = options.outputSize(request.area.sourcePixels.width(), request.area.sourcePixels.height());

    const QString staging = RecordingFiles::stagingPath(*m_destination);
    if (RecordingFileOps::createEmpty(staging))
        return videoError(RecordingTexts::folderNotWritable(QFileInfo(staging).absolutePath()));
    m_staging = staging;
    request.stagingPath = staging;

    m_session = m_backend.createSession(request, m_desktop);
    CaptureSession* current = m_session.get();
    current->onStarted = [this, current] { outputStarted(current); };
    current->onFinished = [this, current] { outputFinished(current); };
    current->onFailed = [this, current](const Error& error) {
        if (m_session.get() == current)
            failAfterStopping(error);
    };
    current->prepare([this, task, current](const std::optional<Error>& error) {
        if (m_session.get() != current || m_startTask != task || m_finishing)
            return;
        if (error)
            startFailed(*error);
        else
            countdown(task, countdownSeconds);
    });
    return std::nullopt;
}

void VideoRecorder::countdown(quint64 task, int secondsLeft)
{
    report(RecorderState::Starting, RecordingTexts::countdown(secondsLeft));
    QTimer::singleShot(secondMs, this, [this, task, secondsLeft] {
        if (m_startTask != task)
            return;
        if (m_startCancelled)
            startFailed(RecordingCancellation::error());
        else if (secondsLeft > 1)
            countdown(task, secondsLeft - 1);
        else
            beginCapture(task);
    });
}

void VideoRecorder::beginCapture(quint64 task)
{
    if (std::optional<Error> error = m_session->start()) {
        startFailed(*error);
        return;
    }
    if (m_startTask == task)
        m_startTask.reset();
}

void VideoRecorder::startFailed(const Error& error)
{
    const Error reported = m_failure.value_or(error);
    m_startTask.reset();
    if (!m_session) {
        finish(reported);
        return;
    }
    m_session->shutDown([this, reported] { finish(reported); });
}

void VideoRecorder::outputStarted(CaptureSession* session)
{
    if (m_session.get() != session || m_state != RecorderState::Starting)
        return;
    m_startedAt.start();
    // The file's clock runs from the start of capture, which is a moment before the first data
    // reaches it; the display counts from the data, so it reads 00:00, 00:01, … from here.
    m_recordedAtStart = recordedSeconds();
    report(RecorderState::Recording, ElapsedTime::text(0));
    m_timer.start();
}

void VideoRecorder::tick()
{
    if (m_state != RecorderState::Recording)
        return;
    const double wallClock
        = m_startedAt.isValid() ? static_cast<double>(m_startedAt.elapsed()) / secondMs : 0.0;
    std::optional<double> recorded = recordedSeconds();
    if (recorded && m_recordedAtStart)
        *recorded -= *m_recordedAtStart;
    report(RecorderState::Recording, ElapsedTime::text(ElapsedTime::totalSeconds(recorded, wallClock)));
}

void VideoRecorder::stop()
{
    switch (m_state) {
    case RecorderState::Idle:
    case RecorderState::Stopping:
    case RecorderState::Saving:
        return;
    case RecorderState::Starting:
        if (m_startTask)
            m_startCancelled = true;
        return;
    case RecorderState::Recording:
        break;
    }
    if (!m_session)
        return;
    report(RecorderState::Stopping, RecordingTexts::completing());
    m_timer.stop();
    CaptureSession* session = m_session.get();
    QTimer::singleShot(0, this, [this, session] {
        if (m_session.get() != session)
            return;
        if (std::optional<Error> error = session->stop())
            failAfterStopping(*error);
    });
}

void VideoRecorder::failAfterStopping(const Error& error)
{
    if (m_state == RecorderState::Idle)
        return;
    m_failure = error;
    if (m_startTask)
        m_startCancelled = true;
    if (m_finishing)
        return;
    m_finishing = true;
    m_timer.stop();
    report(RecorderState::Stopping, RecordingTexts::ending());
    QTimer::singleShot(0, this, [this, error] {
        if (m_session)
            m_session->shutDown([this, error] { finish(error); });
        else
            finish(error);
    });
}

void VideoRecorder::outputFinished(CaptureSession* session)
{
    if (m_session.get() != session || m_finishing)
        return;
    m_finishing = true;
    m_timer.stop();
    report(RecorderState::Saving, RecordingTexts::saving());
    QTimer::singleShot(0, this, &VideoRecorder::saveRecording);
}

void VideoRecorder::saveRecording()
{
    if (!m_staging || !m_destination) {
        finish(videoError(RecordingTexts::locationMissing()));
        return;
    }
    // The finishing step blocks for a while; it runs on a thread of its own and reports back here,
    // unless this recorder is gone by then.
    BackgroundTask::run<Result<QString>>(
        this, [finishAudio = m_backend.finishAudio, staging = *m_staging] { return finishAudio(staging); },
        [this](const Result<QString>& finished) { completeSave(finished); });
}

void VideoRecorder::completeSave(const Result<QString>& finished)
{
    if (!finished) {
        finish(finished.error());
        return;
    }
    const QString destination = *m_destination;
    if (std::optional<Error> error = RecordingFileOps::move(finished.value(), destination)) {
        RecordingFileOps::remove(finished.value());
        finish(*error);
        return;
    }
    if (finished.value() != *m_staging)
        RecordingFileOps::remove(*m_staging);
    if (m_failure) {
        finish(videoError(RecordingTexts::cutShort(m_failure->localizedDescription(), destination)));
        return;
    }
    finish(destination);
}

void VideoRecorder::finish(Result<QString> result)
{
    if (m_state == RecorderState::Idle)
        return;
    m_timer.stop();
    dropSession();
    m_startTask.reset();
    if (m_source)
        m_desktop.release(*std::exchange(m_source, std::nullopt));
    result = rescueStaging(result);
    m_destination.reset();
    m_staging.reset();
    m_finishing = false;
    report(RecorderState::Idle, QString());
    if (onFinish)
        onFinish(result);
}

Result<QString> VideoRecorder::rescueStaging(const Result<QString>& result)
{
    if (!m_staging)
        return result;
    const QString staging = *m_staging;
    const std::optional<qint64> size = RecordingFileOps::size(staging);
    if (result.ok() || RecordingCancellation::matches(result.error()) || !size || *size < 1) {
        RecordingFileOps::remove(staging);
        return result;
    }
    // A write that failed half-way leaves a cut-off fragment at the end: drop it, keep the rest whole.
    FragmentedMp4::trimIncompleteEnd(staging);
    const QString recovery = RecordingFiles::recoveryPath(staging);
    if (std::optional<Error> moveError = RecordingFileOps::move(staging, recovery))
        return videoError(RecordingTexts::withStagingKept(moveError->localizedDescription(), staging));
    return videoError(RecordingTexts::withRecovery(result.error().localizedDescription(), recovery));
}

void VideoRecorder::dropSession()
{
    if (!m_session)
        return;
    m_session->onStarted = nullptr;
    m_session->onFinished = nullptr;
    m_session->onFailed = nullptr;
    // It may be reporting right now (its shut-down callback is what got us here).
    m_session.release()->deleteLater();
}
