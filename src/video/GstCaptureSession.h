#pragma once

#include "CaptureSession.h"
#include "GstPointers.h"
#include "GstSupport.h"
#include "VideoEdges.h"

#include <QSet>
#include <QTimer>
#include <atomic>
#include <mutex>

// A capture made of a GStreamer pipeline (see RecordingPipeline) writing the staging file.
//
// Bus messages, the first data reaching the file and failures of the source (the capture's X
// connection, the desktop's stream) arrive on
// streaming threads; each is handed to the main thread, where this object decides what it means.
// The staging file is flushed to the disk about once a second, so that a power cut loses only the
// last fragment.
class GstCaptureSession : public CaptureSession {
    Q_OBJECT

public:
    GstCaptureSession(CaptureRequest request, RecordingDesktopInterface& desktop, QObject* parent = nullptr);
    ~GstCaptureSession() override;

    void prepare(std::function<void(const std::optional<Error>&)> done) override;
    std::optional<Error> start() override;
    std::optional<Error> stop() override;
    void shutDown(std::function<void()> done) override;
    std::optional<double> recordedSeconds() const override;

    static CaptureSessionFactory factory();

private:
    enum class Phase { Idle, Preparing, Prepared, Running, Stopping, ShuttingDown, Ended };

    static GstBusSyncReply onBusMessage(GstBus* bus, GstMessage* message, gpointer self);
    static GstPadProbeReturn onVideoFrame(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstPadProbeReturn onVideoEvent(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstPadProbeReturn onFileData(GstPad* pad, GstPadProbeInfo* info, gpointer self);

    std::optional<Error> setUp(GstSupport::Parsed parsed);
    std::optional<Error> build(GstSupport::Parsed parsed);
    void addProbe(const char* element, const char* pad, GstPadProbeCallback callback,
        GstPadProbeType type
        = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST));
    void onSourceError(bool sourceLost, const QString& description);
    void handleMessage(GstMessage* message);
    void handleFailure(const Error& error);
    std::optional<Error> errorOfStart(GstStateChangeReturn result);
    void endShutDown();
    void tearDown();

    CaptureRequest m_request;
    RecordingDesktopInterface& m_desktop;
    GstElementPtr m_pipeline;
    std::unique_ptr<RecordingDesktopInterface::ErrorWatch> m_errorWatch;
    Phase m_phase = Phase::Idle;
    std::function<void()> m_shutDownDone;
    QSet<QString> m_failedElements;
    QTimer m_deadline;
    QTimer m_watchdog;
    std::optional<double> m_stoppedAt;
    int m_syncFile = -1;

    // Shared with the streaming threads.
    std::atomic<bool> m_sourceLost { false };
    std::atomic<bool> m_endAsked { false };
    std::atomic<bool> m_dataWritten { false };
    std::atomic<GstClockTime> m_stopRunningTime { GST_CLOCK_TIME_NONE };
    VideoEdges m_edges; // the video source's streaming thread only
    std::atomic<gint64> m_lastSync { 0 };
    std::atomic<gint64> m_lastFrame { 0 };
    mutable std::mutex m_errorMutex;
    std::optional<Error> m_firstError;
};
