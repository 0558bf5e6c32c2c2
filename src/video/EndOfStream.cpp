#include "EndOfStream.h"

#include "GstPointers.h"

namespace {

struct Ending {
    GstElementPtr pipeline; // held until the end has been sent
    QStringList alsoEnd;
};

void endOnThread(GstElement* pipeline, gpointer data)
{
    const QStringList* alsoEnd = &static_cast<const Ending*>(data)->alsoEnd;
    if (!gst_element_send_event(pipeline, gst_event_new_eos())) {
        gst_element_post_message(pipeline,
            gst_message_new_application(GST_OBJECT(pipeline), gst_structure_new_empty(EndOfStream::refused)));
    }
    for (const QString& name : *alsoEnd) {
        GstElementPtr element(gst_bin_get_by_name(GST_BIN(pipeline), name.toUtf8().constData()));
        GstPadPtr pad(element ? gst_element_get_static_pad(element.get(), "src") : nullptr);
        GstPadPtr peer(pad ? gst_pad_get_peer(pad.get()) : nullptr);
        if (peer)
            gst_pad_send_event(peer.get(), gst_event_new_eos());
    }
}

} // namespace

void EndOfStream::send(GstElement* pipeline, const QStringList& alsoEnd)
{
    auto* ending = new Ending { GstElementPtr(GST_ELEMENT(gst_object_ref(pipeline))), alsoEnd };
    gst_element_call_async(
        pipeline, &endOnThread, ending, [](gpointer data) { delete static_cast<Ending*>(data); });
}
