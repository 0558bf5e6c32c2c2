#include "Tones.h"

#include "Pulse.h"

#include <QTest>

#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

double Tones::amplitude(const QVector<float>& stereo, double frequency, qsizetype first, qsizetype count)
{
    constexpr double rate = 48000;
    const qsizetype frames = stereo.size() / 2;
    if (first < 0 || count < 2 || first + count > frames)
        return -1;
    const double omega = 2 * std::numbers::pi * frequency / rate;
    const double coefficient = 2 * std::cos(omega);
    double previous = 0;
    double beforePrevious = 0;
    double windowSum = 0;
    for (qsizetype i = 0; i < count; ++i) {
        const double window = 0.5
            - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(count - 1));
        windowSum += window;
        const double current = window * stereo.at(2 * (first + i)) + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double real = previous - beforePrevious * std::cos(omega);
    const double imaginary = beforePrevious * std::sin(omega);
    return 2 * std::sqrt(real * real + imaginary * imaginary) / windowSum;
}

void Tones::Stop::operator()(QProcess* player) const
{
    player->kill();
    player->waitForFinished(5000);
    delete player;
}

Tones::Player Tones::play(const QString& sink, int frequency, double amplitude)
{
    // Not a live source: its samples follow each other whatever the clock does. A live one, on a
    // busy test machine, is resynchronised to the sound server's clock now and then, and the tone
    // the tests measure then jumps or stops for tens of milliseconds in the sink itself.
    const QString application = u"vexet-tone-%1"_s.arg(frequency);
    Player player(new QProcess);
    player->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    player->setStandardOutputFile(QProcess::nullDevice());
    player->start(u"gst-launch-1.0"_s,
        { u"-q"_s, u"audiotestsrc"_s, u"is-live=false"_s, u"wave=sine"_s, u"freq=%1"_s.arg(frequency),
            u"volume=%1"_s.arg(amplitude), u"!"_s, u"audio/x-raw,rate=48000,channels=2"_s, u"!"_s,
            u"pulsesink"_s, u"device=%1"_s.arg(sink), u"client-name=%1"_s.arg(application) });
    if (!player->waitForStarted()
        || !QTest::qWaitFor(
            [&] { return player->state() == QProcess::Running && Pulse::isPlaying(application); }, 10000))
        return {};
    return player;
}
