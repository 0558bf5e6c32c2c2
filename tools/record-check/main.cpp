// vexet-record-check: the recording engine without the window, for developers, tests and benchmarks.
#include "Heartbeat.h"
#include "PortalVideoDesktop.h"
#include "RecordCheckArguments.h"
#include "RecordingCancellation.h"
#include "VideoRecorder.h"
#include "X11Connection.h"
#include "X11Outputs.h"
#include "X11RecordingDesktop.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QSettings>
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

std::optional<QRectF> regionOf(const RecordCheckArguments& arguments, QString* problem)
{
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
    return QRectF(numbers[0], numbers[1], numbers[2], numbers[3]);
}

// The target on the X desktop, found by the output's name or the window's id.
std::optional<VideoTarget> x11Target(const RecordCheckArguments& arguments, QString* problem)
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
    const std::optional<QRectF> region = regionOf(arguments, problem);
    if (!region)
        return std::nullopt;
    return VideoRegion { *display, *region };
}

// The target where the desktop's chooser picks the monitor or window (a Wayland session): a region
// is a rectangle of the monitor it picked.
Result<VideoTarget> chosenTarget(const Result<VideoTarget>& chosen, const RecordCheckArguments& arguments)
{
    if (!chosen || arguments.kind != RecordCheckArguments::Kind::Region)
        return chosen;
    QString problem;
    const std::optional<QRectF> region = regionOf(arguments, &problem);
    const auto* display = std::get_if<VideoDisplay>(&chosen.value());
    if (!region || !display)
        return Error(u"vexet-record-check"_s, 2, problem);
    return VideoTarget(VideoRegion { *display, *region });
}

} // namespace

int main(int argc, char* argv[])
{
    // On a Wayland session the desktop's portal chooses and streams the source, and the program
    // needs the screens to know the monitor it chose.
    const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const std::unique_ptr<QCoreApplication> application = wayland
        ? std::make_unique<QGuiApplication>(argc, argv)
        : std::make_unique<QCoreApplication>(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QString problem;
    const std::optional<RecordCheckArguments> arguments
        = RecordCheckArguments::parse(QCoreApplication::arguments(), &problem);
    if (!arguments) {
        err << problem << "\n\n" << RecordCheckArguments::usage();
        return 2;
    }
    std::optional<VideoTarget> what;
    std::unique_ptr<RecordingDesktopInterface> desktop;
    PortalVideoDesktop* portal = nullptr;
    // The desktop's remembered choice is kept between runs, beside the program's own settings.
    QSettings store(QSettings::NativeFormat, QSettings::UserScope, u"Vexet"_s, u"vexet-record-check"_s);
    if (wayland) {
        auto portalDesktop = std::make_unique<PortalVideoDesktop>(store);
        portal = portalDesktop.get();
        desktop = std::move(portalDesktop);
    } else {
        what = x11Target(*arguments, &problem);
        auto x11 = std::make_unique<X11RecordingDesktop>();
        if (!x11->isOpen())
            problem = u"cannot connect to the X display"_s;
        desktop = std::move(x11);
        if (!what || !problem.isEmpty()) {
            err << problem << "\n";
            return 2;
        }
    }

    VideoRecorder::Backend backend = VideoRecorder::gstreamer();
    if (!arguments->preset.isEmpty()) {
        backend.createSession = [create = backend.createSession, preset = arguments->preset](
                                    CaptureRequest request, RecordingDesktopInterface& on) {
            request.speedPreset = preset;
            return create(request, on);
        };
    }
    VideoRecorder recorder(*desktop, backend);
    QElapsedTimer clock;
    clock.start();
    int exitCode = 1;
    bool stopScheduled = false;
    const std::unique_ptr<Heartbeat> heartbeat
        = arguments->heartbeat ? std::make_unique<Heartbeat>(clock) : nullptr;
    const auto enter = [&](const QString& phase) {
        if (heartbeat)
            heartbeat->enter(phase);
    };
    const auto stopNow = [&] {
        enter(u"finishing"_s);
        const std::optional<double> recorded = recorder.recordedSeconds();
        out << clock.elapsed() << " recorded " << (recorded ? QString::number(*recorded, 'f', 3) : u"-"_s)
            << Qt::endl;
        recorder.stop();
    };
    const auto end = [&](const Result<QString>& result) {
        for (const Heartbeat::Gap& gap : heartbeat ? heartbeat->gaps() : QList<Heartbeat::Gap>()) {
            out << clock.elapsed() << " heartbeat " << gap.phase << ' ' << gap.longestMs << " at " << gap.atMs
                << Qt::endl;
        }
        if (result.ok()) {
            out << clock.elapsed() << " finished ok " << result.value() << Qt::endl;
            exitCode = 0;
        } else {
            QString message = result.error().localizedDescription();
            out << clock.elapsed() << " finished error " << message.replace(u'\n', u"\\n"_s) << Qt::endl;
            exitCode = RecordingCancellation::matches(result.error()) ? 3 : 1;
        }
        QTimer::singleShot(0, application.get(), &QCoreApplication::quit);
    };
    recorder.onStatus = [&](RecorderState state, const QString& text) {
        out << clock.elapsed() << " status " << recorderStateName(state) << ' ' << text << Qt::endl;
        if (state == RecorderState::Recording)
            enter(u"recording"_s);
        if (state == RecorderState::Recording && !stopScheduled && arguments->stopAfterStartMs < 0) {
            stopScheduled = true;
            QTimer::singleShot(
                static_cast<int>(arguments->seconds * 1000), Qt::PreciseTimer, &recorder, stopNow);
        }
    };
    recorder.onFinish = end;
    const auto record = [&](const VideoTarget& target) {
        enter(u"starting"_s);
        recorder.start(target, arguments->options, arguments->output);
        if (arguments->stopAfterStartMs >= 0)
            QTimer::singleShot(
                static_cast<int>(arguments->stopAfterStartMs), Qt::PreciseTimer, &recorder, stopNow);
    };
    if (portal) {
        out << clock.elapsed() << " choosing" << Qt::endl;
        portal->choose(arguments->kind == RecordCheckArguments::Kind::Window, arguments->options.cursor,
            [&](const Result<VideoTarget>& chosen) {
                const Result<VideoTarget> target = chosenTarget(chosen, *arguments);
                if (target)
                    record(target.value());
                else
                    end(target.error());
            });
    } else {
        record(*what);
    }
    QCoreApplication::exec();
    return exitCode;
}
