// Screenshots on the Wayland test desktop, through the desktop's Screenshot portal. Run with
// bench/wayland-capture.sh. Prints, as medians over the runs:
//   1. vexet-capture -x -t png -D 1 out.png against grim -o HEADLESS-1 out.png (the compositor's
//      own tool, no portal), whole processes, alternating, with the ratio; and vexet-capture
//      without -D, which finds the monitor under the pointer;
//   2. where the helper's time goes, measured in this process with the same code: the portal's
//      round trip (request to answer), reading and decoding the portal's file, cutting the
//      monitor out, and writing the PNG;
//   3. `vexet --capture screen` (handed to the running Vexet) to the editor window mapped,
//      including the 0.3 s the program waits for its own windows to go.
#include "CaptureRequest.h"
#include "DesktopPicture.h"
#include "PngEncoder.h"
#include "PortalRequest.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <algorithm>
#include <cstdio>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n == 0 ? 0 : n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// Milliseconds a whole process takes, from start to exit; negative if it failed.
double processMs(const QString& program, const QStringList& arguments)
{
    QElapsedTimer clock;
    clock.start();
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return -1;
    return double(clock.nsecsElapsed()) / 1e6;
}

double elapsedMs(const std::function<void()>& work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return double(clock.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    const int runs = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 10;
    const QString binaries = qEnvironmentVariable("VEXET_BINARY_DIR") + u"/src/app/"_s;
    QTemporaryDir dir;
    const QString ours = dir.filePath(u"vexet.png"_s);
    const QString grims = dir.filePath(u"grim.png"_s);

    // 1. The two tools, one warm-up run each, then alternating.
    processMs(binaries + u"vexet-capture"_s, { u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"1"_s, ours });
    processMs(u"grim"_s, { u"-o"_s, u"HEADLESS-1"_s, grims });
    QList<double> vexetMs;
    QList<double> grimMs;
    for (int run = 0; run < runs; ++run) {
        vexetMs.append(
            processMs(binaries + u"vexet-capture"_s, { u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"1"_s, ours }));
        grimMs.append(processMs(u"grim"_s, { u"-o"_s, u"HEADLESS-1"_s, grims }));
    }
    if (std::any_of(vexetMs.cbegin(), vexetMs.cend(), [](double ms) { return ms < 0; })
        || std::any_of(grimMs.cbegin(), grimMs.cend(), [](double ms) { return ms < 0; })) {
        std::fputs("a capture failed\n", stderr);
        return 1;
    }
    std::printf(
        "vexet-capture -x -t png -D 1: median %.1f ms; grim -o HEADLESS-1: median %.1f ms; ratio %.2f "
        "(%d runs each)\n",
        median(vexetMs), median(grimMs), median(vexetMs) / median(grimMs), runs);
    // Without a number: the frozen windows that find the monitor under the pointer come up too.
    QList<double> pointerMs;
    for (int run = 0; run < runs; ++run)
        pointerMs.append(processMs(binaries + u"vexet-capture"_s, { u"-x"_s, u"-t"_s, u"png"_s, ours }));
    std::printf(
        "vexet-capture -x -t png (the monitor under the pointer): median %.1f ms\n", median(pointerMs));

    // 2. The helper's steps, one at a time.
    QList<double> roundTrip, readDecode, cut, write;
    QList<DesktopPicture::Monitor> layout;
    for (const QScreen* screen : QGuiApplication::screens())
        layout.append({ screen->geometry(), screen->devicePixelRatio() });
    for (int run = 0; run < runs; ++run) {
        PortalResponse answer;
        bool answered = false;
        PortalRequest request;
        QObject::connect(&request, &PortalRequest::finished, [&](const PortalResponse& response) {
            answer = response;
            answered = true;
        });
        QElapsedTimer clock;
        clock.start();
        request.call(u"org.freedesktop.portal.Screenshot"_s, u"Screenshot"_s, { QString() },
            { { u"interactive"_s, false } });
        if (!QTest::qWaitFor([&] { return answered; }, 60000) || answer.code != 0)
            return 1;
        roundTrip.append(double(clock.nsecsElapsed()) / 1e6);
        const QString file = QUrl(answer.results.value(u"uri"_s).toString()).toLocalFile();
        QImage picture;
        readDecode.append(elapsedMs([&] { picture = QImageReader(file).read(); }));
        QFile::remove(file);
        QImage monitor;
        cut.append(elapsedMs([&] { monitor = DesktopPicture(picture, layout).monitor(0); }));
        write.append(elapsedMs([&] {
            QFile out(ours);
            if (out.open(QIODevice::WriteOnly))
                PngEncoder::write(monitor, out);
        }));
    }
    std::printf("where the helper's time goes (medians): portal round trip %.1f ms, reading and decoding "
                "the portal's %s file %.1f ms, cutting the monitor %.1f ms, writing the PNG %.1f ms; the "
                "rest of the whole run is the helper's start (Qt and its Wayland connection)\n",
        median(roundTrip), "PNG", median(readDecode), median(cut), median(write));

    // 3. The command to the editor on screen.
    QTemporaryDir config;
    QSettings settings(config.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
    settings.setValue(u"hasWelcomed"_s, true);
    settings.setValue(u"copyAutomatically"_s, false);
    settings.sync();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, config.path());
    QProcess vexet;
    vexet.setProcessEnvironment(environment);
    vexet.start(binaries + u"vexet"_s, {});
    if (!vexet.waitForStarted(30000))
        return 1;
    QTest::qWait(1500); // up and listening
    QList<double> editorMs;
    for (int run = 0; run < runs; ++run) {
        QProcess events;
        events.start(u"swaymsg"_s, { u"-r"_s, u"-m"_s, u"-t"_s, u"subscribe"_s, u"[\"window\"]"_s });
        if (!events.waitForStarted(10000))
            return 1;
        QTest::qWait(200);
        QElapsedTimer clock;
        clock.start();
        QProcess command;
        command.setProcessEnvironment(environment);
        command.start(binaries + u"vexet"_s, { u"--capture"_s, u"screen"_s });
        qint64 editorId = -1;
        const bool mapped = QTest::qWaitFor(
            [&] {
                while (events.canReadLine()) {
                    const QByteArray line = events.readLine();
                    if ((line.contains("\"change\": \"new\"") || line.contains("\"change\": \"title\""))
                        && line.contains("Vexet — Önizleme ve kırpma")) {
                        const qsizetype at = line.indexOf("\"id\": ") + 6;
                        editorId = line.mid(at, line.indexOf(',', at) - at).toLongLong();
                        return true;
                    }
                }
                return false;
            },
            30000);
        editorMs.append(double(clock.nsecsElapsed()) / 1e6);
        command.waitForFinished(10000);
        events.kill();
        events.waitForFinished();
        if (!mapped)
            return 1;
        QProcess::execute(u"swaymsg"_s, { u"[con_id=%1] kill"_s.arg(editorId) });
        QTest::qWait(500);
    }
    std::printf("vexet --capture screen to the editor window mapped: median %.1f ms over %d runs (min %.1f, "
                "max %.1f; includes the program's 300 ms wait)\n",
        median(editorMs), runs, *std::min_element(editorMs.cbegin(), editorMs.cend()),
        *std::max_element(editorMs.cbegin(), editorMs.cend()));
    vexet.terminate();
    return vexet.waitForFinished(30000) ? 0 : 1;
}
