#include "MixPipeline.h"

#include "GstSupport.h"
#include "RecordingTexts.h"

#include <QFile>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// Generous: the video is only copied, so even hours of recording take well under a minute.
constexpr double baseDeadlineSeconds = 120;
// Header space kept per track and second of media: a 60 fps video track with irregular frame
// durations needs about 800 bytes a second, an AAC track about 300.
constexpr guint reservedBytesPerSecond = 1200;
constexpr double reservedMarginSeconds = 30;

void setUnboundedQueue(GstElement* queue)
{
    // A track that starts late makes the others wait for it; they must not be held back by a limit.
    g_object_set(
        asGObject(queue), "max-size-buffers", 0u, "max-size-bytes", 0u, "max-size-time", guint64(0), nullptr);
}

GstPad* sinkPad(GstElement* element)
{
    return gst_element_get_static_pad(element, "sink");
}

} // namespace

MixPipeline::MixPipeline(
    QString input, QString output, int audioTracks, double durationSeconds, Header header)
    : m_input(std::move(input))
    , m_output(std::move(output))
    , m_workFile(m_output + u".part"_s)
    , m_audioTracks(audioTracks)
    , m_durationSeconds(durationSeconds)
    , m_header(header)
{
}

MixPipeline::~MixPipeline()
{
    if (m_pipeline)
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

std::optional<Error> MixPipeline::run()
{
    GstSupport::ensureInitialized();
    std::optional<Error> error = build();
    if (!error)
        error = wait();
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    QFile::remove(m_workFile);
    if (error)
        removeOutputs();
    return error;
}

GstElement* MixPipeline::add(const char* factory)
{
    GstElement* element = gst_element_factory_make(factory, nullptr);
    if (element)
        gst_bin_add(asBin(m_pipeline.get()), element);
    return element;
}

std::optional<Error> MixPipeline::build()
{
    m_pipeline.reset(static_cast<GstElement*>(gst_object_ref_sink(gst_pipeline_new("finish"))));
    GstElement* source = add("filesrc");
    GstElement* demuxer = add("qtdemux");
    GstElement* muxer = add("mp4mux");
    GstElement* sink = add("filesink");
    m_videoInput = add("queue");
    if (!source || !demuxer || !muxer || !sink || !m_videoInput)
        return videoError(RecordingTexts::exportUnavailable());
    g_object_set(asGObject(source), "location", QFile::encodeName(m_input).constData(), nullptr);
    if (m_header == Header::Reserved) {
        const double seconds
            = (std::isfinite(m_durationSeconds) ? m_durationSeconds : 0) + reservedMarginSeconds;
        g_object_set(asGObject(muxer), "reserved-max-duration", static_cast<guint64>(seconds * GST_SECOND),
            "reserved-bytes-per-sec", reservedBytesPerSecond, nullptr);
    } else {
        g_object_set(asGObject(muxer), "faststart", TRUE, "faststart-file",
            QFile::encodeName(m_workFile).constData(), nullptr);
    }
    g_object_set(asGObject(sink), "location", QFile::encodeName(m_output).constData(), nullptr);
    setUnboundedQueue(m_videoInput);
    GstPadPtr videoIn(gst_element_get_static_pad(m_videoInput, "sink"));
    gst_pad_add_probe(videoIn.get(), GST_PAD_PROBE_TYPE_BUFFER, &MixPipeline::onVideoData, this, nullptr);
    if (!gst_element_link(source, demuxer) || !gst_element_link(muxer, sink))
        return videoError(RecordingTexts::exportUnavailable());

    GstPadPtr videoPad(gst_element_request_pad_simple(muxer, "video_%u"));
    GstPadPtr queueOut(gst_element_get_static_pad(m_videoInput, "src"));
    if (!videoPad || gst_pad_link(queueOut.get(), videoPad.get()) != GST_PAD_LINK_OK)
        return videoError(RecordingTexts::videoMergeFailed());
    if (m_audioTracks > 0) {
        GstPadPtr audioPad(gst_element_request_pad_simple(muxer, "audio_%u"));
        if (!audioPad || !buildAudio(audioPad.get()))
            return videoError(RecordingTexts::audioMergeFailed());
    }
    g_signal_connect(demuxer, "pad-added", G_CALLBACK(&MixPipeline::onDemuxedPad), this);
    return std::nullopt;
}

bool MixPipeline::buildAudio(GstPad* muxerPad)
{
    if (m_audioTracks == 1) {
        GstElement* queue = add("queue");
        if (!queue)
            return false;
        setUnboundedQueue(queue);
        m_audioInputs.append(queue);
        GstPadPtr out(gst_element_get_static_pad(queue, "src"));
        return gst_pad_link(out.get(), muxerPad) == GST_PAD_LINK_OK;
    }
    GstElement* mixer = add("audiomixer");
    GstElement* mixed = add("queue"); // mixing and encoding each get a thread
    GstElement* convert = add("audioconvert");
    GstElement* encoder = add("avenc_aac");
    if (!mixer || !mixed || !convert || !encoder)
        return false;
    // The same encoder settings as the recording's own tracks.
    g_object_set(asGObject(encoder), "bitrate", 128000, nullptr);
    gst_util_set_object_arg(asGObject(encoder), "aac-coder", "fast");
    GstPadPtr encoded(gst_element_get_static_pad(encoder, "src"));
    if (!gst_element_link_many(mixer, mixed, convert, encoder, nullptr)
        || gst_pad_link(encoded.get(), muxerPad) != GST_PAD_LINK_OK)
        return false;
    for (int i = 0; i < m_audioTracks; ++i) {
        GstElement* queue = add("queue");
        GstElement* decoder = add("decodebin");
        GstElement* trackConvert = add("audioconvert");
        GstElement* resample = add("audioresample");
        if (!queue || !decoder || !trackConvert || !resample)
            return false;
        setUnboundedQueue(queue);
        GstPadPtr mixerPad(gst_element_request_pad_simple(mixer, "sink_%u"));
        GstPadPtr resampled(gst_element_get_static_pad(resample, "src"));
        if (!mixerPad || !gst_element_link(queue, decoder) || !gst_element_link(trackConvert, resample)
            || gst_pad_link(resampled.get(), mixerPad.get()) != GST_PAD_LINK_OK)
            return false;
        // Each source at 1/N, so that the sum cannot clip.
        g_object_set(asGObject(mixerPad.get()), "volume", 1.0 / m_audioTracks, nullptr);
        g_signal_connect(decoder, "pad-added", G_CALLBACK(&MixPipeline::onDecodedPad), trackConvert);
        m_audioInputs.append(queue);
    }
    return true;
}

void MixPipeline::onDemuxedPad(GstElement*, GstPad* pad, gpointer self)
{
    static_cast<MixPipeline*>(self)->routeDemuxedPad(pad);
}

void MixPipeline::routeDemuxedPad(GstPad* pad)
{
    // Runs on the demuxer's thread while the graph is running; the target elements already exist.
    GCharPtr name(gst_pad_get_name(pad));
    const QString padName = QString::fromUtf8(name.get());
    GstElement* target = nullptr;
    if (padName.startsWith(u"video_"_s) && m_videoPads++ == 0) {
        target = m_videoInput;
    } else if (padName.startsWith(u"audio_"_s)) {
        bool ok = false;
        const int index = padName.mid(6).toInt(&ok);
        if (ok && index >= 0 && index < m_audioInputs.size())
            target = m_audioInputs.at(index);
    }
    if (!target) {
        // A second video track, subtitles, data: not part of the result.
        target = add("fakesink");
        g_object_set(asGObject(target), "sync", FALSE, "async", FALSE, nullptr);
        gst_element_sync_state_with_parent(target);
    }
    GstPadPtr input(sinkPad(target));
    gst_pad_link(pad, input.get());
}

GstPadProbeReturn MixPipeline::onVideoData(GstPad*, GstPadProbeInfo*, gpointer self)
{
    ++static_cast<MixPipeline*>(self)->m_videoPictures;
    return GST_PAD_PROBE_OK;
}

void MixPipeline::onDecodedPad(GstElement*, GstPad* pad, gpointer target)
{
    GstPadPtr input(sinkPad(static_cast<GstElement*>(target)));
    if (!gst_pad_is_linked(input.get()))
        gst_pad_link(pad, input.get());
}

std::optional<Error> MixPipeline::wait()
{
    if (gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return videoError(RecordingTexts::mixFailed());
    const double deadline = baseDeadlineSeconds + (std::isfinite(m_durationSeconds) ? m_durationSeconds : 0);
    GstBusPtr bus(gst_element_get_bus(m_pipeline.get()));
    GstMessagePtr message(
        gst_bus_timed_pop_filtered(bus.get(), static_cast<GstClockTime>(deadline * GST_SECOND),
            static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (message && GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS) {
        // A header that promises a length is not a video: there must have been pictures.
        if (m_videoPictures == 0)
            return videoError(RecordingTexts::noVideo());
        return std::nullopt;
    }
    if (message) {
        GError* raw = nullptr;
        gst_message_parse_error(message.get(), &raw, nullptr);
        GErrorPtr error(raw);
        if (error)
            return GstSupport::fromGError(error.get());
    }
    return videoError(RecordingTexts::mixFailed());
}

void MixPipeline::removeOutputs() const
{
    QFile::remove(m_output);
    QFile::remove(m_workFile);
}
