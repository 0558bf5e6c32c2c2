#include "VideoEdges.h"

VideoEdges::~VideoEdges()
{
    gst_buffer_replace(&m_last, nullptr);
}

GstBuffer* VideoEdges::onPicture(GstBuffer* buffer)
{
    if (!m_firstSeen) {
        m_firstSeen = true;
        // The first picture stands for the time from the start of capture, like the audio's silence.
        buffer = gst_buffer_make_writable(buffer);
        const GstClockTime pts = GST_BUFFER_PTS(buffer);
        if (GST_CLOCK_TIME_IS_VALID(pts) && GST_BUFFER_DURATION_IS_VALID(buffer))
            GST_BUFFER_DURATION(buffer) += pts;
        GST_BUFFER_PTS(buffer) = 0;
    }
    gst_buffer_replace(&m_last, buffer);
    return buffer;
}

void VideoEdges::finish(GstPad* input, GstClockTime stop, GstClockTime frameDuration)
{
    if (!m_last || !GST_CLOCK_TIME_IS_VALID(stop) || stop < frameDuration)
        return;
    const GstClockTime last = GST_BUFFER_PTS(m_last);
    const GstClockTime at = stop - frameDuration;
    if (!GST_CLOCK_TIME_IS_VALID(last) || at <= last)
        return;
    // A copy shares the picture's memory; only its times are its own. The frame-rate stage repeats
    // the last picture up to it.
    GstBuffer* again = gst_buffer_copy(m_last);
    GST_BUFFER_PTS(again) = at;
    GST_BUFFER_DTS(again) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(again) = frameDuration;
    GST_BUFFER_FLAG_UNSET(again, GST_BUFFER_FLAG_DISCONT);
    gst_pad_chain(input, again);
}
