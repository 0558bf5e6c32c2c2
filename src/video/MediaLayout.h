#pragma once

#include "Result.h"

#include <QString>

// The tracks and the length of a media file, as GStreamer finds them.
struct MediaLayout {
    int videoTracks = 0;
    int audioTracks = 0;
    double durationSeconds = 0; // NaN when unknown

    static Result<MediaLayout> inspect(const QString& path);
};
