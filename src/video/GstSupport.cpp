#include "GstSupport.h"

#include "GstPointers.h"
#include "RgbToI420.h"

#include <mutex>

using namespace Qt::StringLiterals;

void GstSupport::ensureInitialized()
{
    static std::once_flag once;
    std::call_once(once, [] {
        gst_init(nullptr, nullptr);
        RgbToI420::registerElement(nullptr);
    });
}

QStringList GstSupport::missingElements(CaptureStream::Kind source)
{
    ensureInitialized();
    QList<const char*> needed = { "videoconvertscale", "x264enc", "h264parse", "mp4mux", "filesink",
        "pulsesrc", "audioconvert", "audioresample", "avenc_aac", "aacparse", "qtdemux", "filesrc",
        "avdec_aac", "audiomixer", "audiobuffersplit", "queue", "capsfilter" };
    if (source == CaptureStream::Kind::pipeWire)
        needed << "pipewiresrc"
               << "videorate"
               << "videocrop";
    else
        needed << "ximagesrc";
    QStringList missing;
    for (const char* name : needed) {
        GstObjectPtr<GstElementFactory> factory(gst_element_factory_find(name));
        if (!factory)
            missing.append(QString::fromLatin1(name));
    }
    return missing;
}

GstSupport::Parsed GstSupport::parse(const QByteArray& description)
{
    ensureInitialized();
    Parsed parsed;
    GError* error = nullptr;
    if (GstElement* pipeline = gst_parse_launch(description.constData(), &error))
        parsed.pipeline.reset(static_cast<GstElement*>(gst_object_ref_sink(pipeline)));
    parsed.error.reset(error);
    return parsed;
}

Error GstSupport::fromGError(const GError* error)
{
    if (!error)
        return Error(u"GStreamer"_s, 0, QString());
    return Error(
        QString::fromUtf8(g_quark_to_string(error->domain)), error->code, QString::fromUtf8(error->message));
}
