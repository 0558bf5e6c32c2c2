#pragma once

#include "Error.h"
#include "RecordingDesktopInterface.h"

#include <QStringList>
#include <gst/gst.h>

// GStreamer set up once per process, and what the recorder needs from it.
class GstSupport {
public:
    // Initializes GStreamer on first use; later calls do nothing.
    static void ensureInitialized();

    // The elements the recorder and the finishing step need that are not installed, for captures that
    // reach their pictures the given way.
    static QStringList missingElements(CaptureStream::Kind source);

    // An error of a GStreamer message, with the element's own (translated) message as its description.
    static Error fromGError(const GError* error);
};
