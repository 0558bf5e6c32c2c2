#pragma once

#include <QString>
#include <optional>

// Seeks in an MP4 file the way a player does when asked for an exact time: from the key frame
// before it, decoding forward.
class MediaSeek {
public:
    // The time, in seconds, of the picture shown after an exact seek to `seconds`, or nothing with
    // the reason in *error.
    static std::optional<double> pictureAt(const QString& path, double seconds, QString* error);
};
