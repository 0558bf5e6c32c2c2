#pragma once

#include <QSize>
#include <QString>

// What a finished recording of the tests must be: one H.264 stream of the size and rate, at the
// level that fits them, as long as what was recorded, with its colour samples each in the middle of
// 2 × 2 pixels and its colours BT.709 above 576 lines, BT.601 up to them; one AAC track, 48 kHz
// stereo, as long as the video, in which both test tones (440 Hz from the speaker, 1000 Hz from the
// microphone) sound at half their level.
class RecordingCheck {
public:
    // Empty when the file is all that; otherwise what is wrong with it. tolerance: in seconds, for
    // the lengths.
    static QString problems(
        const QString& file, QSize size, int fps, double recordedSeconds, double tolerance);
};
