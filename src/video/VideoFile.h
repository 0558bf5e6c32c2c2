#pragma once

#include "Result.h"

#include <QString>

// The finishing step of a recording.
//
// The staging file is a fragmented MP4 with one video track and one audio track per audio source.
// finishAudio writes a new hidden ".Vexet-mix-" + UUID + ".mp4" beside it: a regular MP4 with its
// header at the front, the H.264 video passed through unchanged (the same bitstream), and the audio
// tracks mixed into one AAC track at volume 1/N each, every track keeping its place relative to the
// video. One audio track is copied as it is; without audio the result has none. The input is never
// touched, and a failed finish leaves no file of its own behind.
//
// It blocks until the new file is complete and may run on any thread.
class VideoFile {
public:
    static Result<QString> finishAudio(const QString& input);
};
