// bench_recording_branches: prints a part of the recording pipeline's description, so that benchmark
// scripts run exactly what a recording runs.
//
//   bench_recording_branches pictures|conversion|colorimetry|encoder WIDTH HEIGHT FPS
//
// pictures: the default X display's rectangle 0,0 WIDTH × HEIGHT (no pointer) as raw I420 pictures;
// conversion: any raw video to those pictures; colorimetry: the colours they declare, as GStreamer
// writes them; encoder: the H.264 encoder for them.
#include "RecordingPipeline.h"
#include "RgbToI420.h"

#include <QCoreApplication>
#include <QTextStream>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QString part = arguments.value(1);
    const int width = arguments.value(2).toInt();
    const int height = arguments.value(3).toInt();
    const int fps = arguments.value(4).toInt();
    if (arguments.size() != 5 || width < 16 || height < 16 || fps < 1) {
        err << "usage: bench_recording_branches pictures|conversion|colorimetry|encoder WIDTH HEIGHT FPS\n";
        return 2;
    }
    CaptureRequest request;
    request.area.rect = QRect(0, 0, width, height);
    request.area.bounds = request.area.rect;
    request.area.sourcePixels = QSizeF(width, height);
    request.options.fps = fps;
    request.options.cursor = false;
    request.frameSize = { width, height };
    if (part == u"pictures"_s)
        out << RecordingPipeline::pictures(request) << '\n';
    else if (part == u"conversion"_s)
        out << RecordingPipeline::conversion(request) << '\n';
    else if (part == u"colorimetry"_s)
        out << RgbToI420::colorimetry << '\n';
    else if (part == u"encoder"_s)
        out << RecordingPipeline::encoder(request) << '\n';
    else
        return 2;
    return 0;
}
