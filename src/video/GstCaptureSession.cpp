#include "GstCaptureSession.h"

#include "BackgroundTask.h"
#include "EndOfStream.h"
#include "GstSupport.h"
#include "RecordingPipeline.h"
#include "RecordingTexts.h"

#include <QFile>
#include <QThreadPool>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int stopDeadlineMs = 15000;
// After a failure the end of the file is worth a short wait, not a long one.
constexpr int shutDownDeadlineMs = 3000;
constexpr gint64 syncIntervalUs = 1000000;
// Far longer than a desktop's stream is ever quiet: it repeats its last frame every keepAliveMs.
constexpr gint64 silentStreamUs = 3000000;

GstElementPtr element(GstElement* pipeline, const char* name)
{
    return GstElementPtr(gst_bin_get_by_name(asBin(pipeline), name));
}

} // namespace

GstCaptureSession::GstCaptureSession(
    CaptureRequest request, RecordingDesktopInterface& desktop, QObject* parent)
    : CaptureSession(parent)
    , m_request(std::move(request))
    , m_desktop(desktop)
{
    m_deadline.setSingleShot(true);
    // A desktop's stream repeats its last frame while the screen stands still; one that has sent
    // frames and then sends nothing for a while has been stopped without a word (its PipeWire node
    // went away). Before its first frame it may rightly wait: wlroots' desktops send the first one
    // only once something on the screen changes.
    m_watchdog.setInterval(silentStreamUs / 1000 / 4);
    connect(&m_watchdog, &QTimer::timeout, this, [this] {
        const gint64 last = m_lastFrame;
        if (m_phase != Phase::Running)
            m_watchdog.stop();
        else if (last != 0 && g_get_monotonic_time() - last > silentStreamUs)
            onSourceError(true, RecordingTexts::sourceEnded());
    });
}

GstCaptureSession::~GstCaptureSession()
{
    m_phase = Phase::Ended;
    tearDown();
}

CaptureSessionFactory GstCaptureSession::factory()
{
    return [](const CaptureRequest& request,
               RecordingDesktopInterface& desktop) -> std::unique_ptr<CaptureSession> {
        return std::make_unique<GstCaptureSession>(request, desktop);
    };
}

void GstCaptureSession::prepare(std::function<void(const std::optional<Error>&)> done)
{
    if (m_phase != Phase::Idle) {
        QTimer::singleShot(0, this, [done] { done(videoError(RecordingTexts::captureFailed())); });
        return;
    }
    m_phase = Phase::Preparing;
    // Making the pipeline loads its plugins and creates its elements, which takes a tenth of a second
    // or more: it is done on another thread, the rest here.
    BackgroundTask::run<GstSupport::Parsed>(
        this,
        [description = RecordingPipeline::describe(m_request).toUtf8()] {
            return GstSupport::parse(description);
        },
        [this, done](GstSupport::Parsed parsed) {
            // A session shut down in the meantime lets the new pipeline go unused.
            if (m_phase != Phase::Preparing)
                return;
            const std::optional<Error> error = setUp(std::move(parsed));
            if (!error)
                m_phase = Phase::Prepared;
            done(error);
        });
}

std::optional<Error> GstCaptureSession::setUp(GstSupport::Parsed parsed)
{
    if (std::optional<Error> error = build(std::move(parsed)))
        return error;
    m_syncFile = ::open(QFile::encodeName(m_request.stagingPath).constData(), O_RDONLY | O_CLOEXEC);
    m_errorWatch = m_desktop.watchCapture(m_request.area.sourceId, m_request.area.window,
        [this](bool sourceLost, const QString& description) { onSourceError(sourceLost, description); });
    return errorOfStart(gst_element_set_state(m_pipeline.get(), GST_STATE_READY));
}

std::optional<Error> GstCaptureSession::build(GstSupport::Parsed parsed)
{
    if (!parsed.pipeline || parsed.error)
        return GstSupport::fromGError(parsed.error.get());
    m_pipeline = std::move(parsed.pipeline);

    GstObjectPtr<GstClock> clock(gst_system_clock_obtain());
    gst_pipeline_use_clock(reinterpret_cast<GstPipeline*>(m_pipeline.get()), clock.get());
    g_object_set(asGObject(element(m_pipeline.get(), RecordingPipeline::fileSink).get()), "location",
        QFile::encodeName(m_request.stagingPath).constData(), nullptr);
    const CaptureStream& stream = m_request.area.stream;
    GstElementPtr videoSource = element(m_pipeline.get(), RecordingPipeline::videoSource);
    if (stream.kind == CaptureStream::Kind::pipeWire) {
        // The source connects through its own copy of the desktop's descriptor.
        g_object_set(asGObject(videoSource.get()), "fd", stream.pipeWireRemote, "path",
            QByteArray::number(stream.node).constData(), nullptr);
    } else if (!stream.displayName.isEmpty()) {
        g_object_set(asGObject(videoSource.get()), "display-name",
            stream.displayName.toLocal8Bit().constData(), nullptr);
    }
    const QList<bool> tracks = RecordingPipeline::audioTracks(m_request.options);
    for (int i = 0; i < tracks.size(); ++i) {
        const QString monitor
            = m_request.systemAudio.isEmpty() ? u"@DEFAULT_MONITOR@"_s : m_request.systemAudio;
        const QString device = tracks.at(i) ? monitor : m_request.microphone;
        GstElementPtr source
            = element(m_pipeline.get(), RecordingPipeline::audioSource(i).toLatin1().constData());
        if (!device.isEmpty())
            g_object_set(asGObject(source.get()), "device", device.toUtf8().constData(), nullptr);
    }
    GstBusPtr bus(gst_pipeline_get_bus(reinterpret_cast<GstPipeline*>(m_pipeline.get())));
    gst_bus_set_sync_handler(bus.get(), &GstCaptureSession::onBusMessage, this, nullptr);
    addProbe(RecordingPipeline::videoSource, "src", &GstCaptureSession::onVideoFrame);
    // Events are watched where the source's output arrives: pictures can still be handed in there
    // while its end of stream goes by.
    GstPadPtr output(gst_element_get_static_pad(videoSource.get(), "src"));
    GstPadPtr input(gst_pad_get_peer(output.get()));
    gst_pad_add_probe(
        input.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, &GstCaptureSession::onVideoEvent, this, nullptr);
    addProbe(RecordingPipeline::fileSink, "sink", &GstCaptureSession::onFileData);
    return std::nullopt;
}

void GstCaptureSession::addProbe(
    const char* elementName, const char* padName, GstPadProbeCallback callback, GstPadProbeType type)
{
    GstElementPtr owner = element(m_pipeline.get(), elementName);
    GstPadPtr pad(gst_element_get_static_pad(owner.get(), padName));
    gst_pad_add_probe(pad.get(), type, callback, this, nullptr);
}

std::optional<Error> GstCaptureSession::start()
{
    if (m_phase != Phase::Prepared)
        return videoError(RecordingTexts::captureFailed());
    if (std::optional<Error> error = errorOfStart(gst_element_set_state(m_pipeline.get(), GST_STATE_PAUSED)))
        return error;
    // The source found its window when the pipeline was built; one that has closed or been hidden
    // during the countdown would only show up as errors once frames are taken.
    if (m_request.area.window && !m_desktop.windowGeometry(m_request.area.sourceId))
        return videoError(RecordingTexts::windowGone());
    if (std::optional<Error> error = errorOfStart(gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING)))
        return error;
    m_phase = Phase::Running;
    if (m_request.area.stream.kind == CaptureStream::Kind::pipeWire)
        m_watchdog.start();
    return std::nullopt;
}

std::optional<Error> GstCaptureSession::errorOfStart(GstStateChangeReturn result)
{
    if (m_sourceLost)
        return videoError(RecordingTexts::windowGone());
    {
        std::lock_guard lock(m_errorMutex);
        if (m_firstError)
            return m_firstError;
    }
    if (result == GST_STATE_CHANGE_FAILURE)
        return videoError(RecordingTexts::captureFailed());
    return std::nullopt;
}

std::optional<Error> GstCaptureSession::stop()
{
    if (m_phase != Phase::Running)
        return std::nullopt;
    m_stoppedAt = recordedSeconds();
    if (m_stoppedAt)
        m_stopRunningTime = static_cast<GstClockTime>(*m_stoppedAt * GST_SECOND);
    m_phase = Phase::Stopping;
    m_endAsked = true;
    EndOfStream::send(m_pipeline.get());
    m_deadline.disconnect();
    connect(&m_deadline, &QTimer::timeout, this,
        [this] { handleFailure(videoError(RecordingTexts::stopFailed())); });
    m_deadline.start(stopDeadlineMs);
    return std::nullopt;
}

void GstCaptureSession::shutDown(std::function<void()> done)
{
    m_shutDownDone = std::move(done);
    if (!m_stoppedAt)
        m_stoppedAt = recordedSeconds();
    const bool wasCapturing = m_phase == Phase::Running || m_phase == Phase::Stopping;
    m_phase = Phase::ShuttingDown;
    m_endAsked = true;
    m_deadline.disconnect();
    connect(&m_deadline, &QTimer::timeout, this, &GstCaptureSession::endShutDown);
    const bool fileBroken = m_failedElements.contains(QString::fromLatin1(RecordingPipeline::fileSink))
        || m_failedElements.contains(QString::fromLatin1(RecordingPipeline::muxer));
    if (!wasCapturing || fileBroken) {
        m_deadline.start(0);
        return;
    }
    // Let the muxer close its last fragment: end every stream, also those whose source has failed
    // and will not end by itself.
    QSet<QString> ended = m_failedElements;
    // A desktop's stream that has stopped leaves its source waiting for frames that never come.
    if (m_sourceLost)
        ended.insert(QString::fromLatin1(RecordingPipeline::videoSource));
    EndOfStream::send(m_pipeline.get(), ended.values());
    m_deadline.start(shutDownDeadlineMs);
}

void GstCaptureSession::endShutDown()
{
    if (m_phase != Phase::ShuttingDown)
        return;
    m_deadline.stop();
    m_phase = Phase::Ended;
    tearDown();
    if (std::function<void()> done = std::exchange(m_shutDownDone, {}))
        done();
}

std::optional<double> GstCaptureSession::recordedSeconds() const
{
    if (m_stoppedAt)
        return m_stoppedAt;
    if (m_phase != Phase::Running || !m_pipeline)
        return std::nullopt;
    GstObjectPtr<GstClock> clock(gst_pipeline_get_clock(reinterpret_cast<GstPipeline*>(m_pipeline.get())));
    if (!clock)
        return std::nullopt;
    const GstClockTime now = gst_clock_get_time(clock.get());
    const GstClockTime base = gst_element_get_base_time(m_pipeline.get());
    if (!GST_CLOCK_TIME_IS_VALID(now) || !GST_CLOCK_TIME_IS_VALID(base) || now < base)
        return 0.0;
    return static_cast<double>(now - base) / GST_SECOND;
}

void GstCaptureSession::tearDown()
{
    m_deadline.stop();
    m_watchdog.stop();
    if (m_pipeline) {
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
        GstBusPtr bus(gst_pipeline_get_bus(reinterpret_cast<GstPipeline*>(m_pipeline.get())));
        gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
        m_pipeline.reset();
    }
    m_errorWatch.reset();
    if (m_syncFile >= 0) {
        // The last of the file reaches the disk in the background: a slow disk would hold up the main
        // thread for as long as it takes.
        QThreadPool::globalInstance()->start([file = std::exchange(m_syncFile, -1)] {
            ::fdatasync(file);
            ::close(file);
        });
    }
}

void GstCaptureSession::handleFailure(const Error& error)
{
    if ((m_phase == Phase::Running || m_phase == Phase::Stopping) && onFailed)
        onFailed(error);
}

void GstCaptureSession::handleMessage(GstMessage* message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR: {
        GError* raw = nullptr;
        gst_message_parse_error(message, &raw, nullptr);
        GErrorPtr error(raw);
        m_failedElements.insert(QString::fromUtf8(GST_OBJECT_NAME(GST_MESSAGE_SRC(message))));
        handleFailure(GstSupport::fromGError(error.get()));
        break;
    }
    case GST_MESSAGE_APPLICATION:
        if (m_phase == Phase::Stopping && gst_message_has_name(message, EndOfStream::refused))
            handleFailure(videoError(RecordingTexts::stopFailed()));
        break;
    case GST_MESSAGE_EOS:
        if (m_phase == Phase::ShuttingDown) {
            endShutDown();
        } else if (m_phase == Phase::Stopping || m_phase == Phase::Running) {
            // Normally after a stop; a capture that ends by itself has finished its file all the same.
            m_phase = Phase::Ended;
            tearDown();
            if (onFinished)
                onFinished();
        }
        break;
    default:
        break;
    }
}

void GstCaptureSession::onSourceError(bool sourceLost, const QString& description)
{
    // Any thread: only atomics, the locked first error and a queued call.
    if (sourceLost)
        m_sourceLost = true;
    const bool x11 = m_request.area.stream.kind == CaptureStream::Kind::x11Display;
    Error error = Error(x11 ? u"X11"_s : u"PipeWire"_s, 1, description);
    if (sourceLost)
        error = videoError(
            x11 && m_request.area.window ? RecordingTexts::windowGone() : RecordingTexts::sourceEnded());
    {
        std::lock_guard lock(m_errorMutex);
        if (!m_firstError)
            m_firstError = error;
    }
    QMetaObject::invokeMethod(
        this, [this, error] { handleFailure(error); }, Qt::QueuedConnection);
}

GstBusSyncReply GstCaptureSession::onBusMessage(GstBus*, GstMessage* message, gpointer self)
{
    auto* session = static_cast<GstCaptureSession*>(self);
    const GstMessageType type = GST_MESSAGE_TYPE(message);
    if (type != GST_MESSAGE_ERROR && type != GST_MESSAGE_EOS && type != GST_MESSAGE_APPLICATION)
        return GST_BUS_DROP;
    if (type == GST_MESSAGE_ERROR) {
        GError* raw = nullptr;
        gst_message_parse_error(message, &raw, nullptr);
        GErrorPtr error(raw);
        std::lock_guard lock(session->m_errorMutex);
        if (!session->m_firstError)
            session->m_firstError = GstSupport::fromGError(error.get());
    }
    std::shared_ptr<GstMessage> held(gst_message_ref(message), GstMiniObjectUnref());
    QMetaObject::invokeMethod(
        session, [session, held] { session->handleMessage(held.get()); }, Qt::QueuedConnection);
    return GST_BUS_DROP;
}

GstPadProbeReturn GstCaptureSession::onVideoFrame(GstPad*, GstPadProbeInfo* info, gpointer self)
{
    auto* session = static_cast<GstCaptureSession*>(self);
    session->m_lastFrame = g_get_monotonic_time();
    // Once the source is lost it would repeat its last picture or show the desktop behind.
    if (session->m_sourceLost)
        return GST_PAD_PROBE_DROP;
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER)
        GST_PAD_PROBE_INFO_DATA(info) = session->m_edges.onPicture(GST_PAD_PROBE_INFO_BUFFER(info));
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn GstCaptureSession::onVideoEvent(GstPad* pad, GstPadProbeInfo* info, gpointer self)
{
    auto* session = static_cast<GstCaptureSession*>(self);
    if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_EOS)
        return GST_PAD_PROBE_OK;
    // A source that ends while nobody asked it to has lost what it records: a desktop's stream was
    // stopped. The other streams go on until the failure is handled.
    if (!session->m_endAsked)
        session->onSourceError(true, RecordingTexts::sourceEnded());
    else if (!session->m_sourceLost && session->m_request.area.stream.kind == CaptureStream::Kind::pipeWire)
        session->m_edges.finish(pad, session->m_stopRunningTime, GST_SECOND / session->m_request.options.fps);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn GstCaptureSession::onFileData(GstPad*, GstPadProbeInfo*, gpointer self)
{
    auto* session = static_cast<GstCaptureSession*>(self);
    if (!session->m_dataWritten.exchange(true)) {
        QMetaObject::invokeMethod(
            session,
            [session] {
                if (session->m_phase == Phase::Running && session->onStarted)
                    session->onStarted();
            },
            Qt::QueuedConnection);
    }
    // What was written before this buffer reaches the disk now: at most about a second is at risk.
    const gint64 now = g_get_monotonic_time();
    if (session->m_syncFile >= 0 && now - session->m_lastSync >= syncIntervalUs) {
        session->m_lastSync = now;
        ::fdatasync(session->m_syncFile);
    }
    return GST_PAD_PROBE_OK;
}
