// The finishing step on a given recording: how long it takes, how many times faster than real time, and
// the memory it needed (which must not grow with the length of the recording).
//   bench_finish_speed FILE
#include "MediaLayout.h"
#include "VideoFile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <cstdio>
#include <sys/resource.h>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_finish_speed FILE\n");
        return 2;
    }
    const QString input = QString::fromLocal8Bit(argv[1]);
    QElapsedTimer clock;
    clock.start();
    const Result<MediaLayout> layout = MediaLayout::inspect(input);
    const double inspectSeconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    if (!layout) {
        std::fprintf(stderr, "%s\n", qPrintable(layout.error().localizedDescription()));
        return 1;
    }
    clock.restart();
    const Result<QString> output = VideoFile::finishAudio(input);
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    if (!output) {
        std::fprintf(stderr, "%s\n", qPrintable(output.error().localizedDescription()));
        return 1;
    }
    const double length = layout.value().durationSeconds;
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("finish: %.1f s of video with %d audio tracks (%.1f MB) in %.2f s = %.0f x real time"
                " (reading the layout alone: %.2f s); peak resident memory %.0f MB\n",
        length, layout.value().audioTracks, static_cast<double>(QFile(input).size()) / 1e6, seconds,
        length / seconds, inspectSeconds, static_cast<double>(usage.ru_maxrss) / 1024);
    QFile::remove(output.value());
    return 0;
}
