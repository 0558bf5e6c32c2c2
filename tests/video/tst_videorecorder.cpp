#include "H264Level.h"
#include "MediaReader.h"
#include "MediaSeek.h"
#include "MovingPicture.h"
#include "Pulse.h"
#include "RecordingCancellation.h"
#include "RecordingCheck.h"
#include "RecordingFiles.h"
#include "RecordingPipeline.h"
#include "RecordingRun.h"
#include "TestMedia.h"
#include "Tones.h"
#include "X11Connection.h"
#include "X11Outputs.h"
#include "X11RecordingDesktop.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

using namespace Qt::StringLiterals;

// The real engine on the virtual desktop: ximagesrc, PulseAudio's virtual speaker and microphone,
// x264, the finishing step; every file checked by demuxing and decoding it.
class TestVideoRecorder : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<X11RecordingDesktop> m_desktop;
    VideoDisplay m_left; // DUMMY0, 1920 × 1080 at 0,0
    VideoDisplay m_right; // DUMMY1, 1280 × 1024 at 1920,0
    Tones::Player m_speakerTone; // 440 Hz into the speaker
    Tones::Player m_microphoneTone; // 1000 Hz into what the microphone hears

    static VideoOptions bothSources(int fps = 30)
    {
        VideoOptions options;
        options.systemAudio = true;
        options.microphone = true;
        options.fps = fps;
        return options;
    }

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QStringList leftovers() const
    {
        return QDir(m_dir.path())
            .entryList({ u".Vexet-*"_s, u"Vexet-kurtarma-*"_s }, QDir::Files | QDir::Hidden);
    }

    static void checkRecording(
        const QString& file, QSize size, int fps, double recordedSeconds, const QString& what)
    {
        const QString wrong = RecordingCheck::problems(file, size, fps, recordedSeconds, 0.3);
        QVERIFY2(wrong.isEmpty(), qPrintable(what + u": "_s + wrong));
    }

    static bool waitForPicture(QWidget& widget) { return QTest::qWaitForWindowExposed(&widget, 10000); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_desktop = std::make_unique<X11RecordingDesktop>();
        QVERIFY(m_desktop->isOpen());
        X11Connection connection;
        for (const X11Outputs::Output& output : X11Outputs(connection).list()) {
            const VideoDisplay display { output.id, output.name, output.geometry, 1.0 };
            if (output.name == u"DUMMY0"_s)
                m_left = display;
            if (output.name == u"DUMMY1"_s)
                m_right = display;
        }
        QCOMPARE(m_left.geometry, QRect(0, 0, 1920, 1080));
        QCOMPARE(m_right.geometry, QRect(1920, 0, 1280, 1024));
        QCOMPARE(Pulse::defaultSink(), u"vexet_speaker"_s);
        QCOMPARE(Pulse::defaultSource(), u"vexet_mic"_s);
        m_speakerTone = Tones::play(u"vexet_speaker"_s, 440, 0.5);
        m_microphoneTone = Tones::play(u"vexet_mic_feed"_s, 1000, 0.5);
        QVERIFY(m_speakerTone && m_microphoneTone);
    }

    void cleanupTestCase()
    {
        m_speakerTone.reset();
        m_microphoneTone.reset();
    }

    void cleanup()
    {
        for (const QString& name : QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden))
            QFile::remove(m_dir.filePath(name));
    }

    void recordsADisplay()
    {
        MovingPicture content(QRect(1920 + 100, 100, 600, 400), Qt::blue, false);
        content.show();
        QVERIFY(waitForPicture(content));
        const QString destination = path(u"display.mp4"_s);
        QFile old(destination);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("an older film");
        old.close();

        VideoRecorder recorder(*m_desktop);
        int busyStarts = 0;
        RecordingRun run(recorder, 3.0, [&](RecorderState state, const QString&) {
            // Starting again while busy and stopping while stopping or saving change nothing.
            if (state == RecorderState::Starting || state == RecorderState::Recording) {
                ++busyStarts;
                recorder.start(m_left, {}, path(u"other.mp4"_s));
            }
            if (state == RecorderState::Stopping || state == RecorderState::Saving)
                recorder.stop();
        });
        run.start(m_right, bothSources(), destination);
        QVERIFY(run.waitForResult());
        QVERIFY2(run.ok(), qPrintable(run.message()));
        QCOMPARE(run.results.front().value(), destination);
        QVERIFY(busyStarts >= 5);
        const QStringList texts = run.texts();
        QCOMPARE(texts.mid(0, 5), QStringList({ u"Hazırlanıyor…"_s, u"3…"_s, u"2…"_s, u"1…"_s, u"00:00"_s }));
        QCOMPARE(texts.mid(texts.size() - 3),
            QStringList({ u"Kayıt tamamlanıyor…"_s, u"Video kaydediliyor…"_s, QString() }));
        QCOMPARE(texts.count(u"Kayıt tamamlanıyor…"_s), 1);
        QCOMPARE(texts.count(u"Video kaydediliyor…"_s), 1);
        QVERIFY(texts.contains(u"00:02"_s));
        QCOMPARE(recorder.state(), RecorderState::Idle);
        QVERIFY(run.recordedAtStop.has_value());
        checkRecording(destination, QSize(1280, 1024), 30, *run.recordedAtStop, u"display"_s);
        QVERIFY2(leftovers().isEmpty(), qPrintable(leftovers().join(u", "_s)));
        QVERIFY(!QFile::exists(path(u"other.mp4"_s)));
    }

    void finishedFilesHaveKeyFramesToSeekTo()
    {
        MovingPicture content(QRect(100, 100, 600, 400), Qt::red, false);
        content.show();
        QVERIFY(waitForPicture(content));
        const QString destination = path(u"seek.mp4"_s);
        VideoRecorder recorder(*m_desktop);
        // Long enough for a second key frame.
        const double seconds = RecordingPipeline::keyFrameSeconds + 1.5;
        RecordingRun run(recorder, seconds);
        VideoOptions options = bothSources();
        options.microphone = false;
        run.start(VideoRegion { m_left, QRectF(0, 0, 800, 600) }, options, destination);
        QVERIFY(run.waitForResult(60000));
        QVERIFY2(run.ok(), qPrintable(run.message()));

        const MediaReader::Packets packets = MediaReader::packets(destination);
        QVERIFY2(packets.error.isEmpty(), qPrintable(packets.error));
        QCOMPARE(packets.video().size(), 1);
        const QList<double> keys = packets.video().front().keyTimes;
        QVERIFY2(keys.size() >= 2, qPrintable(u"%1 key frames"_s.arg(keys.size())));
        QCOMPARE(keys.front(), packets.video().front().firstTime);
        // The first picture is shown with the first sound, not after the encoder's reordering delay.
        QCOMPARE(packets.audio().size(), 1);
        const double pictureStart = packets.video().front().firstTime;
        const double soundStart = packets.audio().front().firstTime;
        QVERIFY2(std::abs(pictureStart - soundStart) < 0.5 / options.fps,
            qPrintable(u"the picture starts at %1 s, the sound at %2 s"_s.arg(pictureStart).arg(soundStart)));
        for (qsizetype i = 1; i < keys.size(); ++i) {
            QVERIFY2(
                keys.at(i) - keys.at(i - 1) <= RecordingPipeline::keyFrameSeconds + 1.0 / options.fps + 1e-6,
                qPrintable(u"key frames at %1 s and %2 s"_s.arg(keys.at(i - 1)).arg(keys.at(i))));
        }
        // An exact seek shows the picture of the time asked for, between key frames and after the last.
        for (const double time : { 1.0, keys.at(1) - 0.5, keys.at(1) + 0.8 }) {
            QString error;
            const std::optional<double> shown = MediaSeek::pictureAt(destination, time, &error);
            QVERIFY2(shown, qPrintable(u"a seek to %1 s: %2"_s.arg(time).arg(error)));
            QVERIFY2(std::abs(*shown - time) <= 1.0 / options.fps + 1e-6,
                qPrintable(u"a seek to %1 s shows the picture of %2 s"_s.arg(time).arg(*shown)));
        }
    }

    void recordsOnlyThePartOfARegionInsideItsDisplay()
    {
        // Red up to the right edge of the left display, green beyond it.
        MovingPicture red(QRect(1700, 100, 220, 300), Qt::red, false);
        MovingPicture green(QRect(1920, 100, 300, 300), Qt::green, false);
        red.show();
        green.show();
        QVERIFY(waitForPicture(red) && waitForPicture(green));
        VideoOptions options = bothSources();
        options.cursor = false;
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 3.0);
        const QString destination = path(u"region.mp4"_s);
        run.start(VideoRegion { m_left, QRectF(1800, 150, 300, 160) }, options, destination);
        QVERIFY(run.waitForResult());
        QVERIFY2(run.ok(), qPrintable(run.message()));
        checkRecording(destination, QSize(120, 160), 30, *run.recordedAtStop, u"region"_s);

        const QImage picture = MediaReader::decode(destination, 20).frame;
        QCOMPARE(picture.size(), QSize(120, 160));
        int notRed = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QRgb pixel = picture.pixel(x, y);
                if (qRed(pixel) < 120 || qGreen(pixel) > 90)
                    ++notRed;
            }
        }
        QVERIFY2(notRed == 0, qPrintable(u"%1 pixels are not red"_s.arg(notRed)));
    }

    void recordsAWindow()
    {
        MovingPicture content(QRect(300, 200, 640, 480), Qt::darkCyan, true);
        content.setWindowTitle(u"Recorded window"_s);
        content.show();
        QVERIFY(waitForPicture(content));
        const auto window = static_cast<quint32>(content.winId());
        QVERIFY(m_desktop->windowGeometry(window).has_value());
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 3.0);
        const QString destination = path(u"window.mp4"_s);
        run.start(VideoWindow { window, u"tst_videorecorder"_s, content.windowTitle(), {}, 0 }, bothSources(),
            destination);
        QVERIFY(run.waitForResult());
        QVERIFY2(run.ok(), qPrintable(run.message()));
        checkRecording(destination, QSize(640, 480), 30, *run.recordedAtStop, u"window"_s);
        const QImage picture = MediaReader::decode(destination, 20).frame;
        const QRgb centre = picture.pixel(picture.width() / 2, picture.height() / 2);
        QVERIFY2(qGreen(centre) > 90 && qBlue(centre) > 90 && qRed(centre) < 60,
            "the window's own picture was not recorded");
    }

    void aWindowClosedWhileRecordingEndsInARecoveryFile()
    {
        auto content = std::make_unique<MovingPicture>(QRect(200, 200, 400, 300), Qt::darkMagenta, true);
        content->show();
        QVERIFY(waitForPicture(*content));
        const auto window = static_cast<quint32>(content->winId());
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, -1, [&](RecorderState, const QString& text) {
            if (text == u"00:02"_s)
                content.reset();
        });
        run.start(VideoWindow { window, {}, {}, {}, 0 }, bothSources(), path(u"closed.mp4"_s));
        QVERIFY(run.waitForResult(30000));
        QTest::qWait(1000);
        QCOMPARE(run.results.size(), size_t(1));
        const QString lead
            = u"Seçilen pencere kapatılmış veya görünür değil.\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s;
        QVERIFY2(run.message().startsWith(lead), qPrintable(run.message()));
        QCOMPARE(run.texts().count(u"Kayıt sonlandırılıyor…"_s), 1);
        const QString recovery = run.message().mid(lead.size());
        QVERIFY(RecordingFiles::isRecoveryName(QFileInfo(recovery).fileName()));
        QCOMPARE(leftovers(), QStringList({ QFileInfo(recovery).fileName() }));
        QVERIFY(!QFile::exists(path(u"closed.mp4"_s)));
        const MediaReader::Decoded decoded = MediaReader::decode(recovery);
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        QVERIFY2(decoded.videoEnd >= 1.5, qPrintable(u"%1 s rescued"_s.arg(decoded.videoEnd)));
    }

    void aWindowClosedDuringTheCountdownIsABareError()
    {
        auto content = std::make_unique<MovingPicture>(QRect(200, 200, 400, 300), Qt::darkYellow, true);
        content->show();
        QVERIFY(waitForPicture(*content));
        const auto window = static_cast<quint32>(content->winId());
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 2.0, [&](RecorderState, const QString& text) {
            if (text == u"2…"_s)
                content.reset();
        });
        run.start(VideoWindow { window, {}, {}, {}, 0 }, bothSources(), path(u"gone.mp4"_s));
        QVERIFY(run.waitForResult(30000));
        QCOMPARE(run.message(), u"Seçilen pencere kapatılmış veya görünür değil."_s);
        QCOMPARE(
            run.results.front().error(), videoError(u"Seçilen pencere kapatılmış veya görünür değil."_s));
        QVERIFY(!run.states().contains(RecorderState::Recording));
        QVERIFY(leftovers().isEmpty());
        QVERIFY(!QFile::exists(path(u"gone.mp4"_s)));
    }

    void stopDuringTheCountdownLeavesNothing()
    {
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, -1, [&](RecorderState, const QString& text) {
            if (text == u"3…"_s)
                recorder.stop();
        });
        // Exactly 16 points is a region large enough to record.
        run.start(VideoRegion { m_right, QRectF(100, 100, 16, 16) }, bothSources(), path(u"cancelled.mp4"_s));
        QVERIFY(run.waitForResult());
        QVERIFY(RecordingCancellation::matches(run.results.front().error()));
        QCOMPARE(run.texts(), QStringList({ u"Hazırlanıyor…"_s, u"3…"_s, QString() }));
        QVERIFY(leftovers().isEmpty());
        QVERIFY(!QFile::exists(path(u"cancelled.mp4"_s)));
    }

    void targetsThatAreGoneAreRefused()
    {
        quint32 closedWindow = 0;
        {
            MovingPicture closed(QRect(10, 10, 100, 100), Qt::gray, true);
            closed.show();
            QVERIFY(waitForPicture(closed));
            closedWindow = static_cast<quint32>(closed.winId());
        }
        QTest::qWait(200);
        VideoDisplay unplugged = m_right;
        unplugged.sourceId = 0x7fffff;
        const QList<QPair<VideoTarget, QString>> cases {
            { unplugged, u"Seçilen ekran artık bağlı değil."_s },
            { VideoRegion { unplugged, QRectF(0, 0, 100, 100) }, u"Seçilen ekran artık bağlı değil."_s },
            { VideoWindow { closedWindow, {}, {}, {}, 0 },
                u"Seçilen pencere kapatılmış veya görünür değil."_s },
            { VideoRegion { m_right, QRectF(100, 100, 15.9, 100) },
                u"Seçilen alan geçersiz; alanı tekrar seç."_s },
            { VideoRegion { m_right, QRectF(1290, 100, 100, 100) },
                u"Seçilen alan geçersiz; alanı tekrar seç."_s },
        };
        for (const auto& [target, text] : cases) {
            VideoRecorder recorder(*m_desktop);
            RecordingRun run(recorder, 1.0);
            run.start(target, bothSources(), path(u"refused.mp4"_s));
            QVERIFY(run.waitForResult());
            QCOMPARE(run.results.front().error(), videoError(text));
            QCOMPARE(run.texts(), QStringList({ u"Hazırlanıyor…"_s, QString() }));
        }
        QVERIFY(leftovers().isEmpty());
    }
};

QTEST_MAIN(TestVideoRecorder)
#include "tst_videorecorder.moc"
