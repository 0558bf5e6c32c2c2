#include "MediaSeek.h"

#include "GstPointers.h"
#include "GstSupport.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

constexpr GstClockTime waitLimit = 30 * GST_SECOND;

// Waits until the pipeline has settled after a state change or a seek; the reason when it failed.
std::optional<QString> settle(GstElement* pipeline)
{
    GstBusPtr bus(gst_element_get_bus(pipeline));
    GstMessagePtr message(gst_bus_timed_pop_filtered(
        bus.get(), waitLimit, static_cast<GstMessageType>(GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_ERROR)));
    if (!message)
        return u"timed out"_s;
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR) {
        GError* raw = nullptr;
        gst_message_parse_error(message.get(), &raw, nullptr);
        GErrorPtr owned(raw);
        return QString::fromUtf8(raw ? raw->message : "error");
    }
    return std::nullopt;
}

} // namespace

std::optional<double> MediaSeek::pictureAt(const QString& path, double seconds, QString* error)
{
    GstSupport::Parsed parsed
        = GstSupport::parse("filesrc name=file ! qtdemux name=demux demux.video_0 ! queue "
                            "! h264parse ! avdec_h264 ! fakesink name=sink sync=false "
                            "enable-last-sample=true");
    if (!parsed.pipeline) {
        *error = u"no pipeline"_s;
        return std::nullopt;
    }
    GstElement* pipeline = parsed.pipeline.get();
    GstElementPtr file(gst_bin_get_by_name(asBin(pipeline), "file"));
    g_object_set(asGObject(file.get()), "location", QFile::encodeName(path).constData(), nullptr);
    std::optional<double> shown;
    if (gst_element_set_state(pipeline, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE) {
        *error = u"the file does not open"_s;
    } else if (std::optional<QString> opening = settle(pipeline)) {
        *error = *opening;
    } else if (!gst_element_seek_simple(pipeline, GST_FORMAT_TIME,
                   static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                   static_cast<gint64>(seconds * GST_SECOND))) {
        *error = u"the seek was refused"_s;
    } else if (std::optional<QString> seeking = settle(pipeline)) {
        *error = *seeking;
    } else {
        GstElementPtr sink(gst_bin_get_by_name(asBin(pipeline), "sink"));
        GstSample* raw = nullptr;
        g_object_get(asGObject(sink.get()), "last-sample", &raw, nullptr);
        GstSamplePtr sample(raw);
        GstBuffer* buffer = sample ? gst_sample_get_buffer(sample.get()) : nullptr;
        const GstSegment* segment = sample ? gst_sample_get_segment(sample.get()) : nullptr;
        // The file's own time of the picture: an edit list may start the track inside its media.
        const GstClockTime time = buffer && segment
            ? gst_segment_to_stream_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer))
            : GST_CLOCK_TIME_NONE;
        if (GST_CLOCK_TIME_IS_VALID(time))
            shown = static_cast<double>(time) / GST_SECOND;
        else
            *error = u"no picture after the seek"_s;
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    return shown;
}
