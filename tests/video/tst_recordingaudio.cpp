#include "MediaReader.h"
#include "Pulse.h"
#include "RecordingRun.h"
#include "Tones.h"
#include "X11Connection.h"
#include "X11Outputs.h"
#include "X11RecordingDesktop.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

using namespace Qt::StringLiterals;

// The recorder and the sound devices of the virtual desktop's PulseAudio: a monitor is no microphone,
// and a microphone or speaker unplugged while recording is replaced by PulseAudio's fallback device
// without a gap in the sound.
class TestRecordingAudio : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<X11RecordingDesktop> m_desktop;
    VideoDisplay m_right; // DUMMY1
    Tones::Player m_microphoneTone; // 1000 Hz into what the default microphone hears
    QList<int> m_modules;

    static VideoOptions bothSources()
    {
        VideoOptions options;
        options.systemAudio = true;
        options.microphone = true;
        return options;
    }
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QStringList leftovers() const
    {
        return QDir(m_dir.path())
            .entryList({ u".Vexet-*"_s, u"Vexet-kurtarma-*"_s }, QDir::Files | QDir::Hidden);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_desktop = std::make_unique<X11RecordingDesktop>();
        QVERIFY(m_desktop->isOpen());
        X11Connection connection;
        for (const X11Outputs::Output& output : X11Outputs(connection).list()) {
            if (output.name == u"DUMMY1"_s)
                m_right = VideoDisplay { output.id, output.name, output.geometry, 1.0 };
        }
        QCOMPARE(m_right.geometry, QRect(1920, 0, 1280, 1024));
        QCOMPARE(Pulse::defaultSource(), u"vexet_mic"_s);
        m_microphoneTone = Tones::play(u"vexet_mic_feed"_s, 1000, 0.5);
        QVERIFY(m_microphoneTone);
    }

    void cleanupTestCase() { m_microphoneTone.reset(); }

    void cleanup()
    {
        for (int module : std::as_const(m_modules))
            Pulse::unload(module);
        m_modules.clear();
        Pulse::pactl({ u"set-default-source"_s, u"vexet_mic"_s });
        Pulse::pactl({ u"set-default-sink"_s, u"vexet_speaker"_s });
        for (const QString& name : QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden))
            QFile::remove(m_dir.filePath(name));
    }

    void aMonitorIsNoMicrophone()
    {
        QVERIFY(Pulse::pactl({ u"set-default-source"_s, u"vexet_speaker.monitor"_s }));
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 1.0);
        run.start(m_right, bothSources(), path(u"no-mic.mp4"_s));
        QVERIFY(run.waitForResult());
        QCOMPARE(run.results.front().error(), videoError(u"Kullanılabilir mikrofon bulunamadı."_s));
        QVERIFY(leftovers().isEmpty());
    }

    void aMicrophoneThatDisappearsIsFollowedByTheFallback()
    {
        m_modules.append(Pulse::load(u"module-null-sink"_s, { u"sink_name=vexet_test_feed"_s }));
        m_modules.append(Pulse::load(u"module-remap-source"_s,
            { u"master=vexet_test_feed.monitor"_s, u"source_name=vexet_test_mic"_s }));
        QVERIFY(!m_modules.contains(-1));
        QVERIFY(Pulse::pactl({ u"set-default-source"_s, u"vexet_test_mic"_s }));
        const Tones::Player tone = Tones::play(u"vexet_test_feed"_s, 1500, 0.5);
        QVERIFY(tone);
        VideoOptions options;
        options.systemAudio = false;
        options.microphone = true;
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 4.0, [&](RecorderState, const QString& text) {
            if (text == u"00:02"_s) {
                // The microphone is unplugged; the system's default input is the other one.
                Pulse::pactl({ u"set-default-source"_s, u"vexet_mic"_s });
                Pulse::unload(m_modules.takeLast());
            }
        });
        const QString destination = path(u"microphone.mp4"_s);
        run.start(m_right, options, destination);
        QVERIFY(run.waitForResult());
        QVERIFY2(run.ok(), qPrintable(run.message()));
        const MediaReader::Decoded decoded = MediaReader::decode(destination);
        QVERIFY(decoded.error.isEmpty());
        const qsizetype frames = decoded.audio.size() / 2;
        QVERIFY2(
            std::abs(static_cast<double>(frames) / 48000 - decoded.videoEnd) <= 0.3, "the sound has a gap");
        const double before = Tones::amplitude(decoded.audio, 1500, 24000, 24000);
        const double after = Tones::amplitude(decoded.audio, 1000, frames - 36000, 24000);
        QVERIFY2(before > 0.4 && Tones::amplitude(decoded.audio, 1000, 24000, 24000) < 0.02,
            qPrintable(u"first microphone at %1"_s.arg(before)));
        QVERIFY2(after > 0.4 && Tones::amplitude(decoded.audio, 1500, frames - 36000, 24000) < 0.02,
            qPrintable(u"fallback microphone at %1"_s.arg(after)));
    }

    void aSpeakerThatDisappearsIsFollowedByTheFallback()
    {
        m_modules.append(Pulse::load(u"module-null-sink"_s, { u"sink_name=vexet_test_speaker"_s }));
        QVERIFY(!m_modules.contains(-1));
        QVERIFY(Pulse::pactl({ u"set-default-sink"_s, u"vexet_test_speaker"_s }));
        const Tones::Player tone = Tones::play(u"vexet_test_speaker"_s, 1500, 0.5);
        QVERIFY(tone);
        VideoOptions options;
        options.systemAudio = true;
        options.microphone = false;
        VideoRecorder recorder(*m_desktop);
        RecordingRun run(recorder, 4.0, [&](RecorderState, const QString& text) {
            if (text == u"00:02"_s) {
                Pulse::pactl({ u"set-default-sink"_s, u"vexet_speaker"_s });
                Pulse::unload(m_modules.takeLast());
            }
        });
        const QString destination = path(u"speaker.mp4"_s);
        run.start(m_right, options, destination);
        QVERIFY(run.waitForResult());
        QVERIFY2(run.ok(), qPrintable(run.message()));
        const MediaReader::Decoded decoded = MediaReader::decode(destination);
        QVERIFY(decoded.error.isEmpty());
        const qsizetype frames = decoded.audio.size() / 2;
        QVERIFY2(
            std::abs(static_cast<double>(frames) / 48000 - decoded.videoEnd) <= 0.3, "the sound has a gap");
        QVERIFY(Tones::amplitude(decoded.audio, 1500, 24000, 24000) > 0.4);
        // PulseAudio moves a capture whose device has gone to its default input: here the microphone.
        const double after = Tones::amplitude(decoded.audio, 1000, frames - 36000, 24000);
        QVERIFY2(after > 0.4 && Tones::amplitude(decoded.audio, 1500, frames - 36000, 24000) < 0.02,
            qPrintable(u"fallback input at %1"_s.arg(after)));
    }
};

QTEST_GUILESS_MAIN(TestRecordingAudio)
#include "tst_recordingaudio.moc"
