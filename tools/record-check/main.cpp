// vexet-record-check: the recording engine without the window, for developers, tests and benchmarks.
#include "RecordCheckArguments.h"
#include "RecordingCancellation.h"
#include "VideoRecorder.h"
#include "X11Connection.h"
#include "X11Outputs.h"
#include "X11RecordingDesktop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>
#include <QTimer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

std::optional<VideoDisplay> findDisplay(const QString& wanted)
{
    X11Connection connection;
    if (!connection.isOpen())
        return std::nullopt;
    const QList<X11Outputs::Output> outputs = X11Outputs(connection).list();
    for (const X11Outputs::Output& output : outputs) {
        if (wanted.isEmpty() || output.name == wanted || QString::number(output.id) == wanted)
            return VideoDisplay { output.id, output.name, output.geometry, 1.0 };
    }
    return std::nullopt;
}

std::optional<VideoTarget> target(const RecordCheckArguments& arguments, QString* problem)
{
    if (arguments.kind == RecordCheckArguments::Kind::Window)
        return VideoWindow { arguments.window, {}, {}, {}, 0 };
    const std::optional<VideoDisplay> display = findDisplay(arguments.display);
    if (!display) {
        *problem = u"no such monitor: "_s + arguments.display;
        return std::nullopt;
    }
    if (arguments.kind == RecordCheckArguments::Kind::Display)
        return *display;
    const QStringList parts = arguments.region.split(u',');
    QList<double> numbers;
    for (const QString& part : parts) {
        bool ok = false;
        numbers.append(part.toDouble(&ok));
        if (!ok)
            numbers.clear();
    }
    if (numbers.size() != 4) {
        *problem = u"a region is X,Y,W,H: "_s + arguments.region;
        return std::nullopt;
    }
    return VideoRegion { *display, QRectF(numbers[0], numbers[1], numbers[2], numbers[3]) };
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QString problem;
    const std::optional<RecordCheckArguments> arguments
        = RecordCheckArguments::parse(application.arguments(), &problem);
    if (!arguments) {
        err << problem << "\n\n" << RecordCheckArguments::usage();
        return 2;
    }
    const std::optional<VideoTarget> what = target(*arguments, &problem);
    X11RecordingDesktop desktop;
    if (!what || !desktop.isOpen()) {
        err << (problem.isEmpty() ? u"cannot connect to the X display"_s : problem) << "\n";
        return 2;
    }

    VideoRecorder::Backend backend = VideoRecorder::gstreamer();
    if (!arguments->preset.isEmpty()) {
        backend.createSession = [create = backend.createSession, preset = arguments->preset](
                                    CaptureRequest request, RecordingDesktopInterface& on) {
            request.speedPreset = preset;
            return create(request, on);
        };
    }
    VideoRecorder recorder(desktop, backend);
    QElapsedTimer clock;
    clock.start();
    int exitCode = 1;
    bool stopScheduled = false;
    const auto stopNow = [&] {
        const std::optional<double> recorded = recorder.recordedSeconds();
        out << clock.elapsed() << " recorded " << (recorded ? QString::number(*recorded, 'f', 3) : u"-"_s)
            << Qt::endl;
        recorder.stop();
    };
    recorder.onStatus = [&](RecorderState state, const QString& text) {
        out << clock.elapsed() << " status " << recorderStateName(state) << ' ' << text << Qt::endl;
        if (state == RecorderState::Recording && !stopScheduled && arguments->stopAfterStartMs < 0) {
            stopScheduled = true;
            QTimer::singleShot(static_cast<int>(arguments->seconds * 1000), &recorder, stopNow);
        }
    };
    recorder.onFinish = [&](const Result<QString>& result) {
        if (result.ok()) {
            out << clock.elapsed() << " finished ok " << result.value() << Qt::endl;
            exitCode = 0;
        } else {
            QString message = result.error().localizedDescription();
            out << clock.elapsed() << " finished error " << message.replace(u'\n', u"\\n"_s) << Qt::endl;
            exitCode = RecordingCancellation::matches(result.error()) ? 3 : 1;
        }
        QTimer::singleShot(0, &application, &QCoreApplication::quit);
    };
    recorder.start(*what, arguments->options, arguments->output);
    if (arguments->stopAfterStartMs >= 0)
        QTimer::singleShot(static_cast<int>(arguments->stopAfterStartMs), &recorder, stopNow);
    application.exec();
    return exitCode;
}
