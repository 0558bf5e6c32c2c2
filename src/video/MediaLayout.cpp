#include "MediaLayout.h"

#include "GstPointers.h"
#include "GstSupport.h"

#include <QFileInfo>
#include <QUrl>
#include <cmath>
#include <gst/pbutils/pbutils.h>

using namespace Qt::StringLiterals;

namespace {

constexpr GstClockTime inspectTimeout = 20 * GST_SECOND;

struct StreamListFree {
    void operator()(GList* list) const { gst_discoverer_stream_info_list_free(list); }
};

int count(GList* list)
{
    std::unique_ptr<GList, StreamListFree> owned(list);
    return static_cast<int>(g_list_length(owned.get()));
}

} // namespace

Result<MediaLayout> MediaLayout::inspect(const QString& path)
{
    GstSupport::ensureInitialized();
    GError* raw = nullptr;
    GstObjectPtr<GstDiscoverer> discoverer(gst_discoverer_new(inspectTimeout, &raw));
    GErrorPtr error(raw);
    if (!discoverer)
        return GstSupport::fromGError(error.get());
    // A URI names a file only by its whole path.
    const QByteArray uri = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
    GstObjectPtr<GstDiscovererInfo> info(
        gst_discoverer_discover_uri(discoverer.get(), uri.constData(), &raw));
    error.reset(raw);
    if (!info)
        return GstSupport::fromGError(error.get());
    const GstDiscovererResult result = gst_discoverer_info_get_result(info.get());
    // A file without any stream GStreamer can use is simply one without video.
    if (result != GST_DISCOVERER_OK && result != GST_DISCOVERER_MISSING_PLUGINS && error
        && !g_error_matches(error.get(), GST_STREAM_ERROR, GST_STREAM_ERROR_TYPE_NOT_FOUND)
        && !g_error_matches(error.get(), GST_STREAM_ERROR, GST_STREAM_ERROR_DEMUX))
        return GstSupport::fromGError(error.get());

    MediaLayout layout;
    layout.videoTracks = count(gst_discoverer_info_get_video_streams(info.get()));
    layout.audioTracks = count(gst_discoverer_info_get_audio_streams(info.get()));
    const GstClockTime duration = gst_discoverer_info_get_duration(info.get());
    layout.durationSeconds
        = GST_CLOCK_TIME_IS_VALID(duration) ? static_cast<double>(duration) / GST_SECOND : NAN;
    return layout;
}
