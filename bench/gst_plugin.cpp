// Vexet's own GStreamer elements as a plugin, so that gst-launch-1.0 in the benchmarks runs the
// recording's branches exactly as the program does (GST_PLUGIN_PATH=BUILD_DIR/bench).
#include "RgbToI420.h"

#define PACKAGE "vexet"

namespace {

gboolean initPlugin(GstPlugin* plugin)
{
    return RgbToI420::registerElement(plugin);
}

} // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, vexet, "Vexet's own elements", initPlugin, "1.0",
    "Proprietary", "Vexet", "Vexet")
