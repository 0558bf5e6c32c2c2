#pragma once

#include "Error.h"
#include "GstPointers.h"
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

    // A pipeline made from a launch description (floating reference sunk), or what was wrong with the
    // description. Safe on any thread.
    struct Parsed {
        GstElementPtr pipeline;
        GErrorPtr error;
    };
    static Parsed parse(const QByteArray& description);

    // An error of a GStreamer message, with the element's own (translated) message as its description.
    static Error fromGError(const GError* error);
};
