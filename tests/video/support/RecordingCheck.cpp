#include "RecordingCheck.h"

#include "H264Level.h"
#include "MediaReader.h"
#include "Tones.h"

#include <cmath>

using namespace Qt::StringLiterals;

QString RecordingCheck::problems(
    const QString& file, QSize size, int fps, double recordedSeconds, double tolerance)
{
    const MediaReader::Packets packets = MediaReader::packets(file);
    if (!packets.error.isEmpty())
        return packets.error;
    const QList<MediaReader::Track> videoTracks = packets.video();
    const QList<MediaReader::Track> audioTracks = packets.audio();
    if (videoTracks.size() != 1 || !videoTracks.first().isH264())
        return u"not one H.264 stream"_s;
    const MediaReader::Track& video = videoTracks.first();
    if (QSize(video.width, video.height) != size)
        return u"pictures of %1 × %2"_s.arg(video.width).arg(video.height);
    const QString level = u"level=(string)%1,"_s.arg(H264Level::forFrames(size.width(), size.height(), fps));
    if (!video.caps.contains(level))
        return u"not at %1: %2"_s.arg(level, video.caps);
    if (audioTracks.size() != 1 || !audioTracks.first().isAac() || audioTracks.first().rate != 48000
        || audioTracks.first().channels != 2)
        return u"not one AAC track of 48 kHz stereo"_s;

    const MediaReader::Decoded decoded = MediaReader::decode(file);
    if (!decoded.error.isEmpty())
        return decoded.error;
    // Studio range, BT.601's matrix, BT.709's transfer and primaries; colour sampled in the middle.
    if (!decoded.videoCaps.contains(u"chroma-site=(string)jpeg"_s)
        || !decoded.videoCaps.contains(u"colorimetry=(string)2:4:5:1"_s))
        return u"pictures described as %1"_s.arg(decoded.videoCaps);
    const double duration = decoded.videoEnd;
    if (std::abs(duration - recordedSeconds) > tolerance)
        return u"%1 s of video for %2 s recorded"_s.arg(duration).arg(recordedSeconds);
    const double rate = decoded.videoFrames / duration;
    if (std::abs(rate - fps) > 0.02 * fps)
        return u"%1 pictures in %2 s make %3 per second"_s.arg(decoded.videoFrames).arg(duration).arg(rate);

    const qsizetype frames = decoded.audio.size() / 2;
    if (std::abs(static_cast<double>(frames) / 48000 - duration) > tolerance)
        return u"%1 s of sound for %2 s of video"_s.arg(static_cast<double>(frames) / 48000).arg(duration);
    const qsizetype middle = frames / 2 - 24000;
    const double speaker = Tones::amplitude(decoded.audio, 440, middle, 48000);
    const double microphone = Tones::amplitude(decoded.audio, 1000, middle, 48000);
    if (std::abs(speaker - 0.25) > 0.04 || std::abs(microphone - 0.25) > 0.04)
        return u"speaker tone at %1, microphone tone at %2 (0.25 each expected)"_s.arg(speaker).arg(
            microphone);
    return {};
}
