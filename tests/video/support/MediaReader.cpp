#include "MediaReader.h"

#include "GstPointers.h"
#include "GstSupport.h"

#include <QCryptographicHash>
#include <QFile>
#include <QUrl>
#include <memory>
#include <mutex>

using namespace Qt::StringLiterals;

namespace {

constexpr GstClockTime readTimeout = 120 * GST_SECOND;

double seconds(GstClockTime time)
{
    return static_cast<double>(time) / GST_SECOND;
}

QString runToEnd(GstElement* pipeline)
{
    if (gst_element_set_state(pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return u"the pipeline did not start"_s;
    GstBusPtr bus(gst_element_get_bus(pipeline));
    GstMessagePtr message(gst_bus_timed_pop_filtered(
        bus.get(), readTimeout, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    QString error;
    if (!message) {
        error = u"timed out"_s;
    } else if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
        GError* raw = nullptr;
        gchar* debug = nullptr;
        gst_message_parse_error(message.get(), &raw, &debug);
        GErrorPtr owned(raw);
        GCharPtr ownedDebug(debug);
        error = QString::fromUtf8(raw ? raw->message : "error") + u" ("_s
            + QString::fromUtf8(debug ? debug : "") + u")"_s;
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    return error;
}

GstElement* attachSink(GstElement* pipeline, GstPad* pad, const char* before = nullptr)
{
    GstElement* queue = gst_element_factory_make("queue", nullptr);
    g_object_set(
        asGObject(queue), "max-size-buffers", 0u, "max-size-bytes", 0u, "max-size-time", guint64(0), nullptr);
    GstElement* sink = gst_element_factory_make("fakesink", nullptr);
    g_object_set(asGObject(sink), "sync", FALSE, "async", FALSE, nullptr);
    gst_bin_add_many(asBin(pipeline), queue, sink, nullptr);
    GstElement* last = queue;
    if (before) {
        GstElement* extra = gst_parse_bin_from_description(before, TRUE, nullptr);
        gst_bin_add(asBin(pipeline), extra);
        gst_element_link(queue, extra);
        last = extra;
    }
    gst_element_link(last, sink);
    gst_element_sync_state_with_parent(sink);
    if (last != queue)
        gst_element_sync_state_with_parent(last);
    gst_element_sync_state_with_parent(queue);
    GstPadPtr input(gst_element_get_static_pad(queue, "sink"));
    gst_pad_link(pad, input.get());
    return sink;
}

struct PacketState {
    std::mutex mutex;
    QList<MediaReader::Track> tracks;
    QList<std::shared_ptr<QCryptographicHash>> hashes;
    QList<GstSegment> segments;
};

// Where a buffer sits on the file's timeline: its time within the stream's segment (an edit list
// that delays a track shows up there, not in the buffer's own timestamp).
double timelineSeconds(const GstSegment& segment, GstClockTime pts)
{
    const GstClockTime running = gst_segment_to_running_time(&segment, GST_FORMAT_TIME, pts);
    return seconds(GST_CLOCK_TIME_IS_VALID(running) ? running : pts);
}

struct DecodeState {
    std::mutex mutex;
    MediaReader::Decoded result;
    int keepFrame = 0;
    GstSegment videoSegment;
    GstSegment audioSegment;
};

// Keeps the segment of a stream so that buffer times can be placed on the timeline.
bool keepSegment(GstPadProbeInfo* info, GstSegment& segment)
{
    if (!(GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM))
        return false;
    GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT)
        gst_event_copy_segment(event, &segment);
    return true;
}

struct PacketProbe {
    PacketState* state;
    int index;
};

struct Context {
    GstElement* pipeline;
    void* state;
};

GstPadProbeReturn onPacket(GstPad*, GstPadProbeInfo* info, gpointer data)
{
    auto* probe = static_cast<PacketProbe*>(data);
    std::lock_guard lock(probe->state->mutex);
    if (keepSegment(info, probe->state->segments[probe->index]))
        return GST_PAD_PROBE_OK;
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    MediaReader::Track& track = probe->state->tracks[probe->index];
    ++track.packets;
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    if (GST_CLOCK_TIME_IS_VALID(pts)) {
        const double start = timelineSeconds(probe->state->segments[probe->index], pts);
        const double end
            = start + (GST_BUFFER_DURATION_IS_VALID(buffer) ? seconds(GST_BUFFER_DURATION(buffer)) : 0);
        if (track.firstTime < 0 || start < track.firstTime)
            track.firstTime = start;
        if (!GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT))
            track.keyTimes.append(start);
        track.endTime = std::max(track.endTime, end);
    }
    GstMapInfo map;
    if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
        probe->state->hashes[probe->index]->addData(
            QByteArrayView(reinterpret_cast<const char*>(map.data), static_cast<qsizetype>(map.size)));
        gst_buffer_unmap(buffer, &map);
    }
    return GST_PAD_PROBE_OK;
}

void onDemuxedPad(GstElement*, GstPad* pad, gpointer data)
{
    auto* context = static_cast<Context*>(data);
    auto* state = static_cast<PacketState*>(context->state);
    int index = 0;
    {
        std::lock_guard lock(state->mutex);
        MediaReader::Track track;
        GCharPtr name(gst_pad_get_name(pad));
        track.name = QString::fromUtf8(name.get());
        GstCapsPtr caps(gst_pad_get_current_caps(pad));
        if (caps) {
            GCharPtr text(gst_caps_to_string(caps.get()));
            track.caps = QString::fromUtf8(text.get());
            const GstStructure* structure = gst_caps_get_structure(caps.get(), 0);
            gst_structure_get_int(structure, "width", &track.width);
            gst_structure_get_int(structure, "height", &track.height);
            gst_structure_get_int(structure, "rate", &track.rate);
            gst_structure_get_int(structure, "channels", &track.channels);
        }
        index = static_cast<int>(state->tracks.size());
        state->tracks.append(track);
        state->hashes.append(std::make_shared<QCryptographicHash>(QCryptographicHash::Sha256));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        state->segments.append(segment);
    }
    gst_pad_add_probe(pad,
        static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
        &onPacket, new PacketProbe { state, index },
        [](gpointer probe) { delete static_cast<PacketProbe*>(probe); });
    attachSink(context->pipeline, pad);
}

GstPadProbeReturn onPicture(GstPad* pad, GstPadProbeInfo* info, gpointer data)
{
    auto* state = static_cast<DecodeState*>(data);
    std::lock_guard lock(state->mutex);
    if (keepSegment(info, state->videoSegment))
        return GST_PAD_PROBE_OK;
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    MediaReader::Decoded& result = state->result;
    const GstClockTime pts = GST_BUFFER_PTS(buffer);
    if (GST_CLOCK_TIME_IS_VALID(pts)) {
        const double start = timelineSeconds(state->videoSegment, pts);
        if (result.videoStart < 0)
            result.videoStart = start;
        const double duration
            = GST_BUFFER_DURATION_IS_VALID(buffer) ? seconds(GST_BUFFER_DURATION(buffer)) : 0;
        result.videoEnd = std::max(result.videoEnd, start + duration);
    }
    if (result.videoFrames++ != state->keepFrame)
        return GST_PAD_PROBE_OK;
    GstCapsPtr caps(gst_pad_get_current_caps(pad));
    int width = 0;
    int height = 0;
    gst_structure_get_int(gst_caps_get_structure(caps.get(), 0), "width", &width);
    gst_structure_get_int(gst_caps_get_structure(caps.get(), 0), "height", &height);
    GstMapInfo map;
    if (width > 0 && height > 0 && gst_buffer_map(buffer, &map, GST_MAP_READ)) {
        const auto stride = static_cast<qsizetype>(map.size) / height;
        result.frame = QImage(map.data, width, height, stride, QImage::Format_RGB32).copy();
        gst_buffer_unmap(buffer, &map);
    }
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn onSound(GstPad*, GstPadProbeInfo* info, gpointer data)
{
    auto* state = static_cast<DecodeState*>(data);
    std::lock_guard lock(state->mutex);
    if (keepSegment(info, state->audioSegment))
        return GST_PAD_PROBE_OK;
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    MediaReader::Decoded& result = state->result;
    if (result.audioStart < 0 && GST_BUFFER_PTS_IS_VALID(buffer))
        result.audioStart = timelineSeconds(state->audioSegment, GST_BUFFER_PTS(buffer));
    GstMapInfo map;
    if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
        const auto* samples = reinterpret_cast<const float*>(map.data);
        const auto count = static_cast<qsizetype>(map.size / sizeof(float));
        const qsizetype at = result.audio.size();
        result.audio.resize(at + count);
        std::copy(samples, samples + count, result.audio.begin() + at);
        gst_buffer_unmap(buffer, &map);
    }
    return GST_PAD_PROBE_OK;
}

void onDecodedPad(GstElement*, GstPad* pad, gpointer data)
{
    auto* context = static_cast<Context*>(data);
    GstCapsPtr caps(gst_pad_get_current_caps(pad));
    const gchar* kind = caps ? gst_structure_get_name(gst_caps_get_structure(caps.get(), 0)) : "";
    const bool video = g_str_has_prefix(kind, "video/");
    if (!video && !g_str_has_prefix(kind, "audio/"))
        return;
    if (video) {
        auto* state = static_cast<DecodeState*>(context->state);
        GCharPtr text(gst_caps_to_string(caps.get()));
        std::lock_guard lock(state->mutex);
        state->result.videoCaps = QString::fromUtf8(text.get());
    }
    GstElement* sink = attachSink(context->pipeline, pad,
        // A caps filter at the end of a bin description would be dropped: it has to be an element.
        video ? "videoconvert ! capsfilter caps=video/x-raw,format=BGRx"
              : "audioconvert ! audioresample"
                " ! capsfilter caps=\"audio/x-raw,format=F32LE,channels=2,rate=48000,layout=interleaved\"");
    GstPadPtr input(gst_element_get_static_pad(sink, "sink"));
    gst_pad_add_probe(input.get(),
        static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
        video ? &onPicture : &onSound, context->state, nullptr);
}

} // namespace

QList<MediaReader::Track> MediaReader::Packets::video() const
{
    QList<Track> result;
    for (const Track& track : tracks)
        if (track.isVideo())
            result.append(track);
    return result;
}

QList<MediaReader::Track> MediaReader::Packets::audio() const
{
    QList<Track> result;
    for (const Track& track : tracks)
        if (track.isAudio())
            result.append(track);
    return result;
}

MediaReader::Packets MediaReader::packets(const QString& path)
{
    GstSupport::ensureInitialized();
    Packets result;
    if (!QFile::exists(path)) {
        result.error = u"no file"_s;
        return result;
    }
    PacketState state;
    GstElementPtr pipeline(static_cast<GstElement*>(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    GstElement* source = gst_element_factory_make("filesrc", nullptr);
    GstElement* demuxer = gst_element_factory_make("qtdemux", nullptr);
    g_object_set(asGObject(source), "location", QFile::encodeName(path).constData(), nullptr);
    gst_bin_add_many(asBin(pipeline.get()), source, demuxer, nullptr);
    gst_element_link(source, demuxer);
    Context context { pipeline.get(), &state };
    g_signal_connect(demuxer, "pad-added", G_CALLBACK(&onDemuxedPad), &context);
    result.error = runToEnd(pipeline.get());
    pipeline.reset();
    result.tracks = state.tracks;
    for (qsizetype i = 0; i < result.tracks.size(); ++i)
        result.tracks[i].digest = state.hashes.at(i)->result();
    return result;
}

MediaReader::Decoded MediaReader::decode(const QString& path, int keepFrame)
{
    GstSupport::ensureInitialized();
    Decoded missing;
    if (!QFile::exists(path)) {
        missing.error = u"no file"_s;
        return missing;
    }
    DecodeState state;
    state.keepFrame = keepFrame;
    gst_segment_init(&state.videoSegment, GST_FORMAT_TIME);
    gst_segment_init(&state.audioSegment, GST_FORMAT_TIME);
    GstElementPtr pipeline(static_cast<GstElement*>(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    GstElement* decoder = gst_element_factory_make("uridecodebin", nullptr);
    g_object_set(asGObject(decoder), "uri", QUrl::fromLocalFile(path).toEncoded().constData(), nullptr);
    gst_bin_add(asBin(pipeline.get()), decoder);
    Context context { pipeline.get(), &state };
    g_signal_connect(decoder, "pad-added", G_CALLBACK(&onDecodedPad), &context);
    const QString error = runToEnd(pipeline.get());
    pipeline.reset();
    Decoded result = state.result;
    result.error = error;
    return result;
}
