#include "VideoFile.h"

#include "MediaLayout.h"
#include "MixPipeline.h"
#include "RecordingFiles.h"
#include "RecordingTexts.h"

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
    MixPipeline pipeline(input, output, media.audioTracks, media.durationSeconds);
    if (std::optional<Error> error = pipeline.run())
        return *error;
    return output;
}
