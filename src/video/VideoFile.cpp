#include "VideoFile.h"

#include "MediaLayout.h"
#include "MixPipeline.h"
#include "RecordingFiles.h"
#include "RecordingTexts.h"

#include <gst/gst.h>

#include <cmath>

Result<QString> VideoFile::finishAudio(const QString& input)
{
    const Result<MediaLayout> layout = MediaLayout::inspect(input);
    if (!layout)
        return layout.error();
    const MediaLayout& media = layout.value();
    if (media.videoTracks < 1 || !std::isfinite(media.durationSeconds) || !(media.durationSeconds > 0))
        return videoError(RecordingTexts::noVideo());

    const QString output = RecordingFiles::mixPath(input);
    // In one pass with the header's space kept at the front; should that space not suffice, the
    // classic way: header first, media data copied after it.
    std::optional<Error> error
        = MixPipeline(input, output, media.audioTracks, media.durationSeconds, MixPipeline::Header::Reserved)
              .run();
    if (error && error->domain() == QString::fromUtf8(g_quark_to_string(GST_STREAM_ERROR))
        && error->code() == GST_STREAM_ERROR_MUX) {
        error = MixPipeline(
            input, output, media.audioTracks, media.durationSeconds, MixPipeline::Header::Copied)
                    .run();
    }
    if (error)
        return *error;
    return output;
}
