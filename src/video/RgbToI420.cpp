#include "RgbToI420.h"

#include "GstPointers.h"

#include <array>
#include <gst/video/gstvideofilter.h>
#include <libyuv/convert_from_argb.h>
#include <string>

namespace {

struct Filter {
    GstVideoFilter parent;
};
struct FilterClass {
    GstVideoFilterClass parent;
};

// libyuv's "ARGB" is the byte order B, G, R, A: GStreamer's BGRx and BGRA.
constexpr std::array inputFormats { "BGRx", "BGRA" };
constexpr auto anySize = "width=(int)[1,max],height=(int)[1,max],framerate=(fraction)[0/1,max]";

// Sets the structure's "format" to the list of input formats.
void setInputFormats(GstStructure* structure)
{
    GValue formats = G_VALUE_INIT;
    g_value_init(&formats, GST_TYPE_LIST);
    for (const char* format : inputFormats) {
        GValue value = G_VALUE_INIT;
        g_value_set_static_string(g_value_init(&value, G_TYPE_STRING), format);
        gst_value_list_append_and_take_value(&formats, &value);
    }
    gst_structure_take_value(structure, "format", &formats);
}

GstCapsPtr inputCaps()
{
    GstCapsPtr caps(gst_caps_from_string((std::string("video/x-raw,") + anySize).c_str()));
    setInputFormats(gst_caps_get_structure(caps.get(), 0));
    return caps;
}

GstCapsPtr outputCaps()
{
    return GstCapsPtr(
        gst_caps_from_string((std::string("video/x-raw,format=(string)I420,colorimetry=(string)")
            + RgbToI420::colorimetry + ",chroma-site=(string)jpeg," + anySize)
                                 .c_str()));
}

// The same pictures on the other side: every field but the pixel format and its colour description.
GstCaps* transformCaps(GstBaseTransform*, GstPadDirection direction, GstCaps* caps, GstCaps* filter)
{
    // Anything on one side takes anything on the other; the pad templates narrow it.
    if (gst_caps_is_any(caps))
        return filter ? gst_caps_ref(filter) : gst_caps_new_any();
    GstCaps* result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        GstStructure* structure = gst_structure_copy(gst_caps_get_structure(caps, i));
        gst_structure_remove_fields(structure, "format", "colorimetry", "chroma-site", nullptr);
        if (direction == GST_PAD_SINK) {
            gst_structure_set(structure, "format", G_TYPE_STRING, "I420", "colorimetry", G_TYPE_STRING,
                RgbToI420::colorimetry, "chroma-site", G_TYPE_STRING, "jpeg", nullptr);
        } else {
            setInputFormats(structure);
        }
        result = gst_caps_merge_structure(result, structure);
    }
    if (!filter)
        return result;
    GstCaps* both = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(result);
    return both;
}

GstFlowReturn transformFrame(GstVideoFilter*, GstVideoFrame* in, GstVideoFrame* out)
{
    const int converted = libyuv::ARGBToI420(static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(in, 0)),
        GST_VIDEO_FRAME_PLANE_STRIDE(in, 0), static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, 0)),
        GST_VIDEO_FRAME_PLANE_STRIDE(out, 0), static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, 1)),
        GST_VIDEO_FRAME_PLANE_STRIDE(out, 1), static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(out, 2)),
        GST_VIDEO_FRAME_PLANE_STRIDE(out, 2), GST_VIDEO_FRAME_WIDTH(in), GST_VIDEO_FRAME_HEIGHT(in));
    return converted == 0 ? GST_FLOW_OK : GST_FLOW_ERROR;
}

void classInit(gpointer klass, gpointer)
{
    auto* element = static_cast<GstElementClass*>(klass);
    gst_element_class_set_static_metadata(element, "Screen pictures to I420", "Filter/Converter/Video",
        "BGRx or BGRA to I420 with BT.601's matrix, colour sampled in the middle of 2 x 2 pixels", "Vexet");
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, inputCaps().get()));
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, outputCaps().get()));
    static_cast<GstBaseTransformClass*>(klass)->transform_caps = transformCaps;
    static_cast<GstVideoFilterClass*>(klass)->transform_frame = transformFrame;
}

GType filterType()
{
    static const GType type
        = g_type_register_static_simple(gst_video_filter_get_type(), g_intern_static_string("VexetRgbToI420"),
            sizeof(FilterClass), classInit, sizeof(Filter), nullptr, GTypeFlags(0));
    return type;
}

} // namespace

bool RgbToI420::registerElement(GstPlugin* plugin)
{
    return gst_element_register(plugin, elementName, GST_RANK_NONE, filterType());
}
