#include "MediaReader.h"
#include "PatternDesktop.h"
#include "PortalVideoDesktop.h"
#include "RecordCheckProcess.h"
#include "RecordingCancellation.h"
#include "RecordingCheck.h"
#include "RecordingFiles.h"
#include "RecordingRun.h"
#include "RecordingTexts.h"
#include "ScreenCastDesktop.h"
#include "Tones.h"
#include "VideoRecorder.h"

#include <QDBusConnection>
#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int timeoutMs = 30000;
// What H.264 at the recorder's quality leaves of the test pattern's fine detail: the mean difference
// of a decoded picture from the pattern stays below this (another pattern differs by far more).
constexpr double maxDifference = 12;
// Rows at the top of the second output where a bar keeps moving.
constexpr int bandRows = 64;

// The second output's pattern with a bar sweeping through its top rows: the desktop keeps sending
// frames, and everything below the band is known pixel for pixel.
class MovingPattern : public DevicePattern {
public:
    explicit MovingPattern(QScreen* screen)
        : DevicePattern(screen, 2)
    {
        // Ten steps a second: a picture that keeps changing, without taking the machine from the sound.
        m_timer.setInterval(100);
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] {
            ++m_step;
            update(QRect(0, 0, width(), bandRows));
        });
        m_timer.start();
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        DevicePattern::paintEvent(event);
        QPainter painter(this);
        painter.fillRect(QRect(0, 0, width(), bandRows), Qt::black);
        painter.fillRect(QRect((m_step * 9) % (width() - 40), 0, 40, bandRows), Qt::white);
    }

private:
    QTimer m_timer;
    int m_step = 0;
};

// The mean difference of the colour channels of two pictures of one size; 255 otherwise.
double meanDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull())
        return 255;
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto* p = reinterpret_cast<const QRgb*>(x.constScanLine(row));
        const auto* q = reinterpret_cast<const QRgb*>(y.constScanLine(row));
        for (int column = 0; column < x.width(); ++column) {
            sum += std::abs(qRed(p[column]) - qRed(q[column]))
                + std::abs(qGreen(p[column]) - qGreen(q[column]))
                + std::abs(qBlue(p[column]) - qBlue(q[column]));
        }
    }
    return sum / (3.0 * x.width() * x.height());
}

} // namespace

// Recording on the Wayland test desktop through the real ScreenCast portal (the frontend with
// wlroots' backend, rebuilt to cast without a GPU), PipeWire streams of the compositor's own frames
// and PipeWire's pulse server for the sound; every file demuxed and decoded afterwards.
class TestWaylandRecording : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<PortalVideoDesktop> m_desktop;
    PatternDesktop m_patterns;
    Tones::Player m_speakerTone;
    Tones::Player m_microphoneTone;

    QString path(const QString& name) const { return m_dir.filePath(name); }
    static QRect secondRect() { return QGuiApplication::screens().at(1)->geometry(); }

    std::optional<Result<VideoTarget>> choose(bool window = false)
    {
        std::optional<Result<VideoTarget>> chosen;
        m_desktop->choose(window, false, [&chosen](const Result<VideoTarget>& result) { chosen = result; });
        [[maybe_unused]] const bool answered = QTest::qWaitFor([&] { return chosen.has_value(); }, timeoutMs);
        return chosen;
    }

    VideoDisplay chooseSecond()
    {
        if (!ScreenCastDesktop::answer(u"HEADLESS-2"_s))
            return {};
        const std::optional<Result<VideoTarget>> chosen = choose();
        if (!chosen || !chosen->ok() || !std::holds_alternative<VideoDisplay>(chosen->value()))
            return {};
        return std::get<VideoDisplay>(chosen->value());
    }

    static VideoOptions withSound(int fps)
    {
        VideoOptions options;
        options.systemAudio = true;
        options.microphone = true;
        options.cursor = false;
        options.fps = fps;
        return options;
    }

    // Picture number `index` of the file, as decoded.
    static QImage frame(const QString& file, int index) { return MediaReader::decode(file, index).frame; }

    // wlroots' desktops send a stream's first frame only once something on the output changes: over
    // a still pattern, the pattern is drawn again (the same pixels) until the recording has begun.
    bool awaitFirstFrame(const RecordingRun& run)
    {
        return QTest::qWaitFor(
            [&] {
                m_patterns.window(1)->update();
                return !run.results.empty() || run.states().contains(RecorderState::Recording);
            },
            timeoutMs);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("VEXET_SCREENCAST_ANSWER"),
            "the desktop casts no screen: run it with --screencast-backend (scripts/setup.sh does)");
        QVERIFY(m_dir.isValid());
        m_store = std::make_unique<QSettings>(path(u"settings.ini"_s), QSettings::IniFormat);
        m_desktop = std::make_unique<PortalVideoDesktop>(*m_store);
        QVERIFY(m_patterns.show());
        m_speakerTone = Tones::play(u"vexet_speaker"_s, 440, 0.5);
        m_microphoneTone = Tones::play(u"vexet_mic_feed"_s, 1000, 0.5);
        QVERIFY(m_speakerTone && m_microphoneTone);
    }

    void cleanupTestCase()
    {
        m_speakerTone.reset();
        m_microphoneTone.reset();
    }

    void theDesktopChoosesOnceAndTheChoiceIsRemembered()
    {
        m_desktop->forgetChoices();
        QCOMPARE(m_desktop->rememberedChoice(false), QString());
        const int before = ScreenCastDesktop::choices();
        const VideoDisplay chosen = chooseSecond();
        QCOMPARE(ScreenCastDesktop::choices(), before + 1);
        QCOMPARE(chosen.name, u"HEADLESS-2"_s);
        QCOMPARE(chosen.geometry, QRect(1920, 0, 1280, 1024));
        QCOMPARE(chosen.pointPixelScale, 1.0);
        QCOMPARE(m_desktop->rememberedChoice(false), u"HEADLESS-2 (1280 × 1024)"_s);
        QCOMPARE(m_desktop->openSessions(), 1);
        QCOMPARE(m_desktop->displayGeometry(chosen.sourceId), QRect(0, 0, 1280, 1024));
        QVERIFY(m_desktop->stream(chosen.sourceId).has_value());
        m_desktop->release(chosen.sourceId);
        QCOMPARE(m_desktop->openSessions(), 0);
        QVERIFY(!m_desktop->stream(chosen.sourceId).has_value());

        // The remembered choice: the chooser is not shown again, whatever it would answer now.
        QVERIFY(ScreenCastDesktop::answer(u"HEADLESS-1"_s));
        const std::optional<Result<VideoTarget>> again = choose();
        QVERIFY(again && again->ok());
        QCOMPARE(std::get<VideoDisplay>(again->value()).geometry, QRect(1920, 0, 1280, 1024));
        QCOMPARE(ScreenCastDesktop::choices(), before + 1);
        m_desktop->release(std::get<VideoDisplay>(again->value()).sourceId);

        // A token the desktop does not know: it asks, and the new choice is kept.
        m_store->setValue(u"videoSource/displayToken"_s, u"not-a-token"_s);
        const std::optional<Result<VideoTarget>> unknown = choose();
        QVERIFY(unknown && unknown->ok());
        QCOMPARE(ScreenCastDesktop::choices(), before + 2);
        QCOMPARE(std::get<VideoDisplay>(unknown->value()).geometry, QRect(0, 0, 1920, 1080));
        QVERIFY(m_store->value(u"videoSource/displayToken"_s).toString() != u"not-a-token"_s);
        QCOMPARE(m_desktop->rememberedChoice(false), u"HEADLESS-1 (1920 × 1080)"_s);
        m_desktop->release(std::get<VideoDisplay>(unknown->value()).sourceId);

        // Declined in the chooser: a cancel, and nothing stays open.
        m_desktop->forgetChoices();
        QVERIFY(ScreenCastDesktop::answer(u"cancel"_s));
        const std::optional<Result<VideoTarget>> declined = choose();
        QVERIFY(declined && !declined->ok());
        QVERIFY2(RecordingCancellation::matches(declined->error()),
            qPrintable(declined->error().localizedDescription()));
        QCOMPARE(ScreenCastDesktop::choices(), before + 3);
        QCOMPARE(m_desktop->openSessions(), 0);
        QCOMPARE(m_desktop->rememberedChoice(false), QString());
    }

    void recordsTheWholeSecondMonitorWithSound()
    {
        m_desktop->forgetChoices();
        MovingPattern moving(QGuiApplication::screens().at(1));
        moving.showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(&moving, timeoutMs));
        const VideoDisplay display = chooseSecond();
        QVERIFY(display.sourceId != 0);

        VideoRecorder recorder(*m_desktop);
        // Long enough that the second the sound is checked in lies well after PipeWire has set up
        // the new streams.
        RecordingRun run(recorder, 5.0);
        run.start(display, withSound(30), path(u"whole.mp4"_s));
        QVERIFY2(run.waitForResult(), qPrintable(run.history()));
        QVERIFY2(run.ok(), qPrintable(run.message()));
        QCOMPARE(m_desktop->openSessions(), 0);
        QVERIFY(run.recordedAtStop.has_value());
        const QString wrong
            = RecordingCheck::problems(path(u"whole.mp4"_s), QSize(1280, 1024), 30, *run.recordedAtStop, 0.2);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));

        // The picture is the output's: below the moving band, the pattern; in it, the bar moves.
        const QImage middle = frame(path(u"whole.mp4"_s), 75);
        const QImage later = frame(path(u"whole.mp4"_s), 90);
        QCOMPARE(middle.size(), QSize(1280, 1024));
        const QRect known(0, bandRows, 1280, 1024 - bandRows);
        const QImage expected = m_patterns.expected(1).copy(known);
        const double difference = meanDifference(middle.copy(known), expected);
        const double otherOutput = meanDifference(middle.copy(known), m_patterns.expected(0).copy(known));
        QVERIFY2(difference < maxDifference && otherOutput > 30,
            qPrintable(u"the picture differs from the output by %1, from the other by %2"_s.arg(difference)
                           .arg(otherOutput)));
        const QRect band(0, 0, 1280, bandRows);
        QVERIFY2(
            meanDifference(middle.copy(band), later.copy(band)) > 1, "the bar does not move in the file");
    }

    void aStillScreenStillHasEveryFrame()
    {
        QVERIFY(m_patterns.show());
        const VideoDisplay display = chooseSecond();
        QVERIFY(display.sourceId != 0);
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 5.0);
        run.start(display, withSound(60), path(u"still.mp4"_s));
        QVERIFY(awaitFirstFrame(run));
        QVERIFY2(run.waitForResult(), qPrintable(run.history()));
        QVERIFY2(run.ok(), qPrintable(run.message()));
        const QString wrong
            = RecordingCheck::problems(path(u"still.mp4"_s), QSize(1280, 1024), 60, *run.recordedAtStop, 0.2);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        const MediaReader::Decoded decoded = MediaReader::decode(path(u"still.mp4"_s), 200);
        // Nothing changes on the output, so the desktop sends hardly a frame: every one of the five
        // seconds' sixtieths still has its picture, from the first to the last.
        QVERIFY2(
            decoded.videoFrames >= 5 * 60 - 2 && decoded.videoFrames >= qRound(decoded.videoEnd * 60) - 1,
            qPrintable(u"%1 pictures in %2 s"_s.arg(decoded.videoFrames).arg(decoded.videoEnd)));
        QVERIFY(meanDifference(decoded.frame, m_patterns.expected(1)) < maxDifference);
    }

    void aRegionIsExactlyItsPartOfTheMonitor()
    {
        QVERIFY(m_patterns.show());
        const VideoDisplay display = chooseSecond();
        QVERIFY(display.sourceId != 0);
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 4.0);
        run.start(VideoRegion { display, QRectF(100, 200, 400, 300) }, withSound(30), path(u"region.mp4"_s));
        QVERIFY(awaitFirstFrame(run));
        QVERIFY2(run.waitForResult(), qPrintable(run.history()));
        QVERIFY2(run.ok(), qPrintable(run.message()));
        const QString wrong
            = RecordingCheck::problems(path(u"region.mp4"_s), QSize(400, 300), 30, *run.recordedAtStop, 0.2);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        const QImage picture = frame(path(u"region.mp4"_s), 30);
        const double difference = meanDifference(picture, m_patterns.expected(1).copy(100, 200, 400, 300));
        const double shifted = meanDifference(picture, m_patterns.expected(1).copy(102, 200, 400, 300));
        QVERIFY2(difference < maxDifference && shifted > 1.5 * difference,
            qPrintable(u"differs by %1 (by %2 two pixels off)"_s.arg(difference).arg(shifted)));
        QCOMPARE(m_desktop->openSessions(), 0);
    }

    void theDesktopEndingTheStreamLeavesARecoveryFile()
    {
        MovingPattern moving(QGuiApplication::screens().at(1));
        moving.showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(&moving, timeoutMs));
        const VideoDisplay display = chooseSecond();
        QVERIFY(display.sourceId != 0);
        VideoRecorder recorder(*m_desktop);
        bool ended = false;
        RecordingRun run(recorder, -1, [&](RecorderState state, const QString& text) {
            if (state != RecorderState::Recording || text != u"00:02"_s || ended)
                return;
            // What the desktop does when sharing is stopped: its backend closes the session.
            ended = ScreenCastDesktop::closeSessions(QDBusConnection::sessionBus().baseService()) > 0;
        });
        run.start(display, withSound(30), path(u"ended.mp4"_s));
        QVERIFY2(run.waitForResult(), qPrintable(run.history()));
        QVERIFY(ended);
        QVERIFY(!run.ok());
        const QString message = run.message();
        const QString lead
            = RecordingTexts::sourceEnded() + u"\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s;
        QVERIFY2(message.startsWith(lead), qPrintable(message));
        const QString recovery = message.mid(lead.size());
        QVERIFY(QFile::exists(recovery));
        const MediaReader::Decoded decoded = MediaReader::decode(recovery);
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        QVERIFY2(decoded.videoEnd >= 1.5, qPrintable(u"%1 s of video"_s.arg(decoded.videoEnd)));
        QCOMPARE(recorder.state(), RecorderState::Idle);
        QCOMPARE(m_desktop->openSessions(), 0);
    }

    void aKilledRecordingLeavesAPlayableStagingFile()
    {
        MovingPattern moving(QGuiApplication::screens().at(1));
        moving.showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(&moving, timeoutMs));
        QVERIFY(ScreenCastDesktop::answer(u"HEADLESS-2"_s));
        const QString folder = path(u"killed"_s);
        QVERIFY(QDir().mkpath(folder));
        RecordCheckProcess driver;
        driver.start({ u"--display"_s, u"HEADLESS-2"_s, u"--seconds"_s, u"60"_s, u"--out"_s,
            folder + u"/film.mp4"_s });
        QVERIFY2(driver.waitForLine(u"status recording 00:00"_s), qPrintable(driver.lines().join(u'\n')));
        QTest::qWait(5000);
        driver.kill();
        QCOMPARE(driver.exitStatus(), QProcess::CrashExit);
        const QStringList left = QDir(folder).entryList(QDir::Files | QDir::Hidden);
        QCOMPARE(left.size(), 1);
        QVERIFY(RecordingFiles::isStagingName(left.first()));
        const MediaReader::Decoded decoded = MediaReader::decode(QDir(folder).filePath(left.first()));
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        // All but at most the last second and a half.
        QVERIFY2(decoded.videoEnd >= 3.5, qPrintable(u"%1 s of video after 5 s"_s.arg(decoded.videoEnd)));
    }
};

QTEST_MAIN(TestWaylandRecording)
#include "tst_wayland_recording.moc"
