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
// durations needs about 800 bytes a second, an AAC track about 300. The muxer keeps the space twice
// and what the header leaves unused stays in the file as padding, so it is kept to what the longest
// header needs, for the file's own length (known to the millisecond) and a few seconds more; a
// header that still outgrows it makes the mix start again the classic way.
constexpr guint reservedBytesPerSecond = 900;
constexpr double reservedMarginSeconds = 5;
// Audio travels between the threads of the mix in buffers of a tenth of a second.
constexpr int audioBuffersPerSecond = 10;

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
    GstElement* muxer = add("mp4mux");
    GstElement* sink = add("filesink");
    if (!muxer || !sink || !gst_element_link(muxer, sink))
        return videoError(RecordingTexts::exportUnavailable());
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

    GstPadPtr videoPad(gst_element_request_pad_simple(muxer, "video_%u"));
    if (!videoPad)
        return videoError(RecordingTexts::videoMergeFailed());
    gst_pad_add_probe(videoPad.get(), GST_PAD_PROBE_TYPE_BUFFER, &MixPipeline::onVideoData, this, nullptr);
    if (!addReader("video_0", std::move(videoPad)))
        return videoError(RecordingTexts::exportUnavailable());
    if (m_audioTracks > 0) {
        GstPadPtr audioPad(gst_element_request_pad_simple(muxer, "audio_%u"));
        if (!audioPad || !buildAudio(std::move(audioPad)))
            return videoError(RecordingTexts::audioMergeFailed());
    }
    return std::nullopt;
}

bool MixPipeline::addReader(const QByteArray& track, GstPadPtr input)
{
    GstElement* source = add("filesrc");
    GstElement* demuxer = add("qtdemux");
    if (!source || !demuxer || !gst_element_link(source, demuxer))
        return false;
    g_object_set(asGObject(source), "location", QFile::encodeName(m_input).constData(), nullptr);
    m_routes.push_back({ this, track, std::move(input) });
    g_signal_connect(demuxer, "pad-added", G_CALLBACK(&MixPipeline::onDemuxedPad), &m_routes.back());
    return true;
}

bool MixPipeline::buildAudio(GstPadPtr muxerPad)
{
    if (m_audioTracks == 1)
        return addReader("audio_0", std::move(muxerPad));
    GstElement* mixer = add("audiomixer");
    GstElement* mixed = add("queue"); // mixing and encoding each get a thread
    GstElement* convert = add("audioconvert");
    GstElement* encoder = add("avenc_aac");
    GstElement* encoded = add("queue");
    if (!mixer || !mixed || !convert || !encoder || !encoded)
        return false;
    // Fewer, longer buffers than the decoder's: every buffer costs a hand-over between threads.
    g_object_set(asGObject(mixer), "output-buffer-duration",
        static_cast<guint64>(GST_SECOND / audioBuffersPerSecond), nullptr);
    // The same encoder settings as the recording's own tracks.
    g_object_set(asGObject(encoder), "bitrate", 128000, nullptr);
    gst_util_set_object_arg(asGObject(encoder), "aac-coder", "fast");
    GstPadPtr out(gst_element_get_static_pad(encoded, "src"));
    if (!gst_element_link_many(mixer, mixed, convert, encoder, encoded, nullptr)
        || gst_pad_link(out.get(), muxerPad.get()) != GST_PAD_LINK_OK)
        return false;
    for (int i = 0; i < m_audioTracks; ++i) {
        // Decoded on its reader's thread, which then waits in the mixer for the other tracks.
        GstElement* decoder = add("avdec_aac");
        GstElement* trackConvert = add("audioconvert");
        GstElement* resample = add("audioresample");
        GstElement* gather = add("audiobuffersplit");
        if (!decoder || !trackConvert || !resample || !gather)
            return false;
        g_object_set(asGObject(gather), "output-buffer-duration", 1, audioBuffersPerSecond, nullptr);
        GstPadPtr mixerPad(gst_element_request_pad_simple(mixer, "sink_%u"));
        GstPadPtr resampled(gst_element_get_static_pad(gather, "src"));
        if (!mixerPad || !gst_element_link_many(decoder, trackConvert, resample, gather, nullptr)
            || gst_pad_link(resampled.get(), mixerPad.get()) != GST_PAD_LINK_OK
            || !addReader("audio_" + QByteArray::number(i), GstPadPtr(sinkPad(decoder))))
            return false;
        // Each source at 1/N, so that the sum cannot clip.
        g_object_set(asGObject(mixerPad.get()), "volume", 1.0 / m_audioTracks, nullptr);
    }
    return true;
}

void MixPipeline::onDemuxedPad(GstElement*, GstPad* pad, gpointer data)
{
    // Runs on the demuxer's thread while the graph is running; the target pads already exist.
    const Route& route = *static_cast<Route*>(data);
    GCharPtr name(gst_pad_get_name(pad));
    if (route.track == name.get()) {
        if (route.track.startsWith("video")) {
            gst_pad_add_probe(
                pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, &MixPipeline::onVideoSegment, nullptr, nullptr);
            gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, &MixPipeline::onFirstPicture, nullptr, nullptr);
        }
        gst_pad_link(pad, route.input.get());
        return;
    }
    // Another reader's track, a second video track, subtitles, data: not read here.
    GstElement* drop = route.pipeline->add("fakesink");
    g_object_set(asGObject(drop), "sync", FALSE, "async", FALSE, nullptr);
    gst_element_sync_state_with_parent(drop);
    GstPadPtr input(sinkPad(drop));
    gst_pad_link(pad, input.get());
}

GstPadProbeReturn MixPipeline::onVideoSegment(GstPad*, GstPadProbeInfo* info, gpointer)
{
    // The demuxer ends a file without an edit list at the end of its decoding times, which with
    // B-frames comes before the last pictures are shown: the muxer would drop them. Every picture of
    // the file is copied, so the track has no end but its own.
    GstEvent* event = gst_pad_probe_info_get_event(info);
    if (GST_EVENT_TYPE(event) != GST_EVENT_SEGMENT)
        return GST_PAD_PROBE_OK;
    const GstSegment* original = nullptr;
    gst_event_parse_segment(event, &original);
    if (original->format != GST_FORMAT_TIME || !GST_CLOCK_TIME_IS_VALID(original->stop))
        return GST_PAD_PROBE_OK;
    GstSegment open = *original;
    open.stop = GST_CLOCK_TIME_NONE;
    GstEvent* replacement = gst_event_new_segment(&open);
    gst_event_set_seqnum(replacement, gst_event_get_seqnum(event));
    gst_event_unref(event);
    GST_PAD_PROBE_INFO_DATA(info) = replacement;
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn MixPipeline::onFirstPicture(GstPad* pad, GstPadProbeInfo* info, gpointer)
{
    // A fragmented MP4 from GStreamer's muxer has no edit list: its video track starts at the
    // decoding time of its first picture, so that with B-frames every picture is shown late by the
    // encoder's reordering delay, the first picture's distance from its decoding time. Moved back by
    // that much, the first picture is shown at its own time again, its decoding starts before zero,
    // and the muxer writes an edit list that skips the delay rather than an empty edit that adds it.
    // A file whose own edit list already skips it decodes from before zero and is left as it is.
    const GstBuffer* buffer = gst_pad_probe_info_get_buffer(info);
    GstEventPtr event(gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0));
    if (!event || !GST_BUFFER_PTS_IS_VALID(buffer) || !GST_BUFFER_DTS_IS_VALID(buffer))
        return GST_PAD_PROBE_REMOVE;
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event.get(), &segment);
    guint64 shown = 0;
    guint64 decoded = 0;
    if (gst_segment_to_running_time_full(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer), &shown) > 0
        && gst_segment_to_running_time_full(segment, GST_FORMAT_TIME, GST_BUFFER_DTS(buffer), &decoded) > 0
        && shown > decoded)
        gst_pad_set_offset(pad, -static_cast<gint64>(shown - decoded));
    return GST_PAD_PROBE_REMOVE;
}

GstPadProbeReturn MixPipeline::onVideoData(GstPad*, GstPadProbeInfo*, gpointer self)
{
    ++static_cast<MixPipeline*>(self)->m_videoPictures;
    return GST_PAD_PROBE_OK;
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
