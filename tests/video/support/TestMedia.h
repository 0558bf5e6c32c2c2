#pragma once

#include <QList>
#include <QString>

// Small MP4 files made the way the recorder makes them: H.264 video with B-frames and AAC audio
// tracks, fragmented about once a second unless asked otherwise.
class TestMedia {
public:
    struct Tone {
        int frequency = 440;
        double amplitude = 0.5;
        double startSeconds = 0; // where the track begins on the video's timeline
        double seconds = 3;
    };

    // Writes the file and waits for it; returns an error text, empty on success.
    static QString write(const QString& path, double videoSeconds, const QList<Tone>& tones,
        bool fragmented = true, const QString& pattern = QStringLiteral("ball"));

    // The bytes of a file, for "was it touched" checks.
    static QByteArray digest(const QString& path);
    // Files in a folder whose names start with the prefix (hidden ones included).
    static QStringList filesStartingWith(const QString& folder, const QString& prefix);
};
