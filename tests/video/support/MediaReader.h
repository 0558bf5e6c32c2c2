#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <QVector>

// Looks into media files with GStreamer, the way a player would: tracks and packets as stored, and
// the decoded pictures and sound.
class MediaReader {
public:
    struct Track {
        QString name; // the demuxer's pad: video_0, audio_0, …
        QString caps;
        int width = 0;
        int height = 0;
        int rate = 0;
        int channels = 0;
        int packets = 0;
        double firstTime = -1; // seconds, of the earliest packet
        double endTime = -1; // seconds, end of the latest packet
        QByteArray digest; // of every packet's bytes, in order
        QList<double> keyTimes; // seconds, of the packets that decode on their own (key frames)
        bool isVideo() const { return name.startsWith(QStringLiteral("video")); }
        bool isAudio() const { return name.startsWith(QStringLiteral("audio")); }
        bool isH264() const { return caps.startsWith(QStringLiteral("video/x-h264")); }
        bool isAac() const
        {
            return caps.startsWith(QStringLiteral("audio/mpeg"))
                && caps.contains(QStringLiteral("mpegversion=(int)4"));
        }
    };

    struct Packets {
        QList<Track> tracks;
        QString error; // empty when the file was read to its end
        QList<Track> video() const;
        QList<Track> audio() const;
    };

    struct Decoded {
        int videoFrames = 0;
        double videoStart = -1; // seconds
        double videoEnd = -1;
        QImage frame; // the picture asked for, as RGB32
        QString videoCaps; // the decoder's pictures as it describes them: colorimetry, chroma siting, …
        QVector<float> audio; // interleaved stereo at 48 kHz
        double audioStart = -1; // seconds
        QString error; // empty when the whole file decoded
    };

    // Demuxes every track to its end without decoding.
    static Packets packets(const QString& path);
    // Decodes the file to its end: counts every picture, keeps picture number `keepFrame` and all the sound.
    static Decoded decode(const QString& path, int keepFrame = 0);
};
