#pragma once

#include <gst/gst.h>
#include <memory>

// Owning pointers for GStreamer and GLib values, released the way each type asks.
struct GstObjectUnref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
template <typename T> using GstObjectPtr = std::unique_ptr<T, GstObjectUnref>;
using GstElementPtr = GstObjectPtr<GstElement>;
using GstBusPtr = GstObjectPtr<GstBus>;
using GstPadPtr = GstObjectPtr<GstPad>;

struct GstMiniObjectUnref {
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstEvent* event) const { gst_event_unref(event); }
};
using GstMessagePtr = std::unique_ptr<GstMessage, GstMiniObjectUnref>;
using GstCapsPtr = std::unique_ptr<GstCaps, GstMiniObjectUnref>;
using GstSamplePtr = std::unique_ptr<GstSample, GstMiniObjectUnref>;
using GstEventPtr = std::unique_ptr<GstEvent, GstMiniObjectUnref>;

struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPtr = std::unique_ptr<GError, GErrorFree>;

struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};
using GCharPtr = std::unique_ptr<gchar, GFree>;

// The few casts GStreamer's C API needs, in one place.
inline GstBin* asBin(GstElement* element)
{
    return reinterpret_cast<GstBin*>(element);
}
inline GObject* asGObject(gpointer object)
{
    return static_cast<GObject*>(object);
}
inline GstObject* asGstObject(gpointer object)
{
    return static_cast<GstObject*>(object);
}
