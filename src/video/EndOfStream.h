#pragma once

#include <QStringList>
#include <gst/gst.h>

// Ending a live pipeline's streams waits until each source's streaming thread takes the end, which
// may be a frame or a piece of sound later: the end is sent from GStreamer's own threads, so that the
// main thread never waits for it.
class EndOfStream {
public:
    // The name of the application message posted on the pipeline's bus when it refuses the end.
    static constexpr const char* refused = "end-of-stream-refused";

    // Ends every source of the pipeline, and the stream after each element named in alsoEnd (sources
    // that have failed and will not end by themselves).
    static void send(GstElement* pipeline, const QStringList& alsoEnd = {});
};
