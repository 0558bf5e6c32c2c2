#pragma once

#include <gst/gst.h>

// The first and last pictures of a recording's video stretched to the recording's edges. A desktop
// that sends a frame only when its screen changes would otherwise leave the file shorter than the
// recording at both ends: the first picture comes a moment after the capture starts, the last one
// may be a good part of a second old when the recording is stopped.
//
// Used from the video source's streaming thread only (its buffers and its end of stream).
class VideoEdges {
public:
    VideoEdges() = default;
    VideoEdges(const VideoEdges&) = delete;
    VideoEdges& operator=(const VideoEdges&) = delete;
    ~VideoEdges();

    // A picture on its way: the first one is made to start at zero, and each is kept as the last.
    // Returns the buffer to pass on (writable, when it had to be changed).
    GstBuffer* onPicture(GstBuffer* buffer);
    // As the source's end of stream reaches `input` (the pad the source feeds, which takes pictures
    // until the end has passed it): the last picture once more, so that it lasts until `stop`
    // (running time). Nothing when no picture came, or the last one is recent.
    void finish(GstPad* input, GstClockTime stop, GstClockTime frameDuration);

private:
    bool m_firstSeen = false;
    GstBuffer* m_last = nullptr;
};
