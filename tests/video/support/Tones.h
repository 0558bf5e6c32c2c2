#pragma once

#include <QProcess>
#include <QString>
#include <QVector>
#include <memory>

// Test tones: played into a PulseAudio sink by a real player, and found again in decoded sound.
class Tones {
public:
    // The amplitude (0…1 for a full-scale sine) of one frequency in the left channel of interleaved
    // stereo at 48 kHz, over `count` frames from frame `first`; a Hann window keeps neighbours out.
    static double amplitude(const QVector<float>& stereo, double frequency, qsizetype first, qsizetype count);

    // Ends the player and waits for it.
    struct Stop {
        void operator()(QProcess* player) const;
    };
    using Player = std::unique_ptr<QProcess, Stop>;

    // Plays a sine of the given frequency and amplitude into the sink until the player is released.
    // Returns once the sound server plays the stream; no player if it does not within 10 s.
    static Player play(const QString& sink, int frequency, double amplitude);
};
