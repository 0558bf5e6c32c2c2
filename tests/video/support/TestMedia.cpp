#include "TestMedia.h"

#include "GstPointers.h"
#include "GstSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <cmath>

using namespace Qt::StringLiterals;

QString TestMedia::write(const QString& path, double videoSeconds, const QList<Tone>& tones, bool fragmented,
    const QString& pattern)
{
    GstSupport::ensureInitialized();
    const int frames = static_cast<int>(std::lround(videoSeconds * 30));
    QString description
        = u"mp4mux name=m fragment-duration=%1 ! filesink name=out "
          u"videotestsrc num-buffers=%2 pattern=%3 ! video/x-raw,width=%4,height=%5,framerate=30/1 "
          u"! x264enc speed-preset=superfast key-int-max=30 bframes=3 ! h264parse ! queue ! m. "_s
              .arg(fragmented ? 1000 : 0)
              .arg(frames)
              .arg(pattern)
              .arg(pattern == u"snow"_s ? 640 : 320)
              .arg(pattern == u"snow"_s ? 480 : 240);
    for (const Tone& tone : tones) {
        const int buffers = static_cast<int>(std::lround(tone.seconds * 48000 / 1024));
        description
            += u"audiotestsrc num-buffers=%1 samplesperbuffer=1024 freq=%2 volume=%3 timestamp-offset=%4 "
               u"! audio/x-raw,rate=48000,channels=2 ! avenc_aac ! aacparse ! queue ! m. "_s.arg(buffers)
                   .arg(tone.frequency)
                   .arg(tone.amplitude)
                   .arg(static_cast<qint64>(std::llround(tone.startSeconds * 1e9)));
    }
    GError* raw = nullptr;
    GstElementPtr pipeline(static_cast<GstElement*>(
        gst_object_ref_sink(gst_parse_launch(description.toUtf8().constData(), &raw))));
    GErrorPtr parseError(raw);
    if (!pipeline || parseError)
        return parseError ? QString::fromUtf8(parseError->message) : u"no pipeline"_s;
    GstElementPtr sink(gst_bin_get_by_name(asBin(pipeline.get()), "out"));
    g_object_set(asGObject(sink.get()), "location", QFile::encodeName(path).constData(), nullptr);
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    GstBusPtr bus(gst_element_get_bus(pipeline.get()));
    GstMessagePtr message(gst_bus_timed_pop_filtered(
        bus.get(), 60 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    QString error;
    if (!message)
        error = u"timed out"_s;
    else if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_ERROR)
        error = u"pipeline error"_s;
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return error;
}

QByteArray TestMedia::digest(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return hash.result();
}

QStringList TestMedia::filesStartingWith(const QString& folder, const QString& prefix)
{
    return QDir(folder).entryList({ prefix + u"*"_s }, QDir::Files | QDir::Hidden | QDir::System);
}
