#include "MediaReader.h"
#include "MixPipeline.h"
#include "Mp4Boxes.h"
#include "RecordingFiles.h"
#include "TestMedia.h"
#include "Tones.h"
#include "VideoFile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

// The finishing step on real MP4 files made by GStreamer, checked by demuxing and decoding the result.
class TestVideoFile : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    QString input(const QString& name, double videoSeconds, const QList<TestMedia::Tone>& tones,
        const QString& pattern = u"ball"_s, bool fragmented = true)
    {
        const QString path = m_dir.filePath(name);
        const QString error = TestMedia::write(path, videoSeconds, tones, fragmented, pattern);
        if (!error.isEmpty())
            qWarning("could not write %s: %s", qPrintable(name), qPrintable(error));
        return path;
    }

    QStringList mixFiles() const { return TestMedia::filesStartingWith(m_dir.path(), u".Vexet-mix-"_s); }

    // The result is a new hidden file beside the input, a regular MP4 with its header first.
    void checkRegularBeside(const QString& in, const QString& out)
    {
        QVERIFY(out != in);
        QCOMPARE(QFileInfo(out).absolutePath(), QFileInfo(in).absolutePath());
        QVERIFY2(RecordingFiles::isMixName(QFileInfo(out).fileName()), qPrintable(out));
        const QStringList boxes = topLevelBoxes(out);
        QVERIFY2(!boxes.contains(u"moof"_s), qPrintable(boxes.join(u' ')));
        QVERIFY2(boxes.indexOf(u"moov"_s) >= 0 && boxes.indexOf(u"moov"_s) < boxes.indexOf(u"mdat"_s),
            qPrintable(boxes.join(u' ')));
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void init() { QVERIFY(mixFiles().isEmpty()); }

    void cleanup()
    {
        for (const QString& name : mixFiles())
            QFile::remove(m_dir.filePath(name));
    }

    void silentRecordingKeepsItsVideoAndGetsNoAudio()
    {
        const QString in = input(u"silent.mp4"_s, 2, {});
        const QByteArray before = TestMedia::digest(in);
        const MediaReader::Packets original = MediaReader::packets(in);
        QCOMPARE(original.video().size(), 1);

        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY2(out.ok(), qPrintable(out.ok() ? QString() : out.error().localizedDescription()));
        checkRegularBeside(in, out.value());
        const MediaReader::Packets result = MediaReader::packets(out.value());
        QVERIFY2(result.error.isEmpty(), qPrintable(result.error));
        QCOMPARE(result.video().size(), 1);
        QCOMPARE(result.audio().size(), 0);
        QVERIFY(result.video().first().isH264());
        QCOMPARE(result.video().first().packets, original.video().first().packets);
        QCOMPARE(result.video().first().digest, original.video().first().digest);
        QCOMPARE(TestMedia::digest(in), before);
    }

    void oneAudioTrackIsCopied()
    {
        const QString in = input(u"one.mp4"_s, 2, { { 440, 0.5, 0, 2 } });
        const MediaReader::Packets original = MediaReader::packets(in);
        QCOMPARE(original.audio().size(), 1);

        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY(out.ok());
        checkRegularBeside(in, out.value());
        const MediaReader::Packets result = MediaReader::packets(out.value());
        QCOMPARE(result.audio().size(), 1);
        QCOMPARE(result.audio().first().digest, original.audio().first().digest);
        QCOMPARE(result.video().first().digest, original.video().first().digest);
        // The fragmented input shows its pictures late by the B-frames' reordering delay; the result
        // shows the first one with the first sound.
        QVERIFY2(original.video().first().firstTime > 0.5 / 30,
            qPrintable(u"the input's pictures start at %1 s"_s.arg(original.video().first().firstTime)));
        QCOMPARE(original.audio().first().firstTime, 0.0);
        QCOMPARE(result.video().first().firstTime, 0.0);
        QCOMPARE(result.audio().first().firstTime, 0.0);
    }

    void twoAudioTracksAreMixedAtHalfLevel()
    {
        const QString in = input(u"two.mp4"_s, 3, { { 440, 0.5, 0, 3 }, { 1000, 0.5, 0, 3 } });
        const QByteArray before = TestMedia::digest(in);
        const MediaReader::Packets original = MediaReader::packets(in);
        QCOMPARE(original.audio().size(), 2);

        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY2(out.ok(), qPrintable(out.ok() ? QString() : out.error().localizedDescription()));
        checkRegularBeside(in, out.value());
        QCOMPARE(TestMedia::digest(in), before);

        const MediaReader::Packets result = MediaReader::packets(out.value());
        QCOMPARE(result.video().size(), 1);
        QCOMPARE(result.video().first().digest, original.video().first().digest);
        QCOMPARE(result.audio().size(), 1);
        QVERIFY(result.audio().first().isAac());
        QCOMPARE(result.audio().first().rate, 48000);
        QCOMPARE(result.audio().first().channels, 2);

        const MediaReader::Decoded decoded = MediaReader::decode(out.value());
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        const double low = Tones::amplitude(decoded.audio, 440, 48000, 48000);
        const double high = Tones::amplitude(decoded.audio, 1000, 48000, 48000);
        QVERIFY2(std::abs(low - 0.25) < 0.03, qPrintable(u"440 Hz at %1"_s.arg(low)));
        QVERIFY2(std::abs(high - 0.25) < 0.03, qPrintable(u"1000 Hz at %1"_s.arg(high)));
    }

    void anAudioTrackThatStartsLateKeepsItsOffset()
    {
        // A regular MP4 keeps a late start in its edit list (a fragmented one from GStreamer would not).
        const QString in
            = input(u"offset.mp4"_s, 4, { { 440, 0.5, 0, 4 }, { 1000, 0.5, 2, 2 } }, u"ball"_s, false);
        const MediaReader::Packets original = MediaReader::packets(in);
        QCOMPARE(original.audio().size(), 2);
        QVERIFY2(std::abs(original.audio().at(1).firstTime - 2.0) < 0.05,
            qPrintable(u"the input's late track starts at %1 s"_s.arg(original.audio().at(1).firstTime)));

        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY(out.ok());
        const MediaReader::Decoded decoded = MediaReader::decode(out.value());
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        const auto frame = [&](double seconds) {
            return static_cast<qsizetype>((seconds - std::max(0.0, decoded.audioStart)) * 48000);
        };
        // Before two seconds only the first source sounds, afterwards both, each at half level.
        QVERIFY(Tones::amplitude(decoded.audio, 440, frame(0.5), 48000) > 0.2);
        QVERIFY2(Tones::amplitude(decoded.audio, 1000, frame(0.5), 48000) < 0.02,
            qPrintable(u"1000 Hz before its start: %1"_s.arg(
                Tones::amplitude(decoded.audio, 1000, frame(0.5), 48000))));
        QVERIFY2(
            Tones::amplitude(decoded.audio, 1000, frame(1.2), 24000) < 0.02, "the late track moved forward");
        const double both440 = Tones::amplitude(decoded.audio, 440, frame(2.5), 48000);
        const double both1000 = Tones::amplitude(decoded.audio, 1000, frame(2.5), 48000);
        QVERIFY2(std::abs(both440 - 0.25) < 0.03 && std::abs(both1000 - 0.25) < 0.03,
            qPrintable(u"after 2 s: 440 Hz at %1, 1000 Hz at %2"_s.arg(both440).arg(both1000)));
    }

    void aSingleLateTrackIsCopiedInPlace()
    {
        const QString in = input(u"late-one.mp4"_s, 3, { { 440, 0.5, 1, 2 } }, u"ball"_s, false);
        const MediaReader::Packets original = MediaReader::packets(in);
        QCOMPARE(original.audio().size(), 1);
        QVERIFY(std::abs(original.audio().first().firstTime - 1.0) < 0.05);
        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY(out.ok());
        const MediaReader::Packets result = MediaReader::packets(out.value());
        QCOMPARE(result.audio().size(), 1);
        QCOMPARE(result.audio().first().digest, original.audio().first().digest);
        QVERIFY2(std::abs(result.audio().first().firstTime - 1.0) < 0.05,
            qPrintable(u"the copied track starts at %1 s"_s.arg(result.audio().first().firstTime)));
        // A regular input's own edit list already shows its first picture at its time; it stays there.
        QCOMPARE(original.video().first().firstTime, 0.0);
        QCOMPARE(result.video().first().firstTime, 0.0);
        QCOMPARE(result.video().first().digest, original.video().first().digest);
    }

    void theCopiedHeaderLayoutIsARegularFileToo()
    {
        // The finishing step falls back to this layout when the header outgrows its kept space.
        const QString in = input(u"copied.mp4"_s, 2, { { 440, 0.5, 0, 2 }, { 1000, 0.5, 0, 2 } });
        const QString out = RecordingFiles::mixPath(in);
        QVERIFY(!MixPipeline(in, out, 2, 2.0, MixPipeline::Header::Copied).run());
        checkRegularBeside(in, out);
        QCOMPARE(mixFiles(), QStringList({ QFileInfo(out).fileName() }));
        const MediaReader::Packets result = MediaReader::packets(out);
        QCOMPARE(result.video().size(), 1);
        QCOMPARE(result.audio().size(), 1);
        QCOMPARE(result.video().first().digest, MediaReader::packets(in).video().first().digest);
    }

    void aFileWithoutVideoIsRefused()
    {
        const QString in = m_dir.filePath(u"audio-only.mp4"_s);
        QVERIFY(TestMedia::write(in, 0, { { 440, 0.5, 0, 1 } }).isEmpty() || QFile::exists(in));
        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY(!out.ok());
        QCOMPARE(out.error().localizedDescription(), u"Geçerli video oluşmadı; kayıt çok kısa olabilir."_s);
        QCOMPARE(out.error().domain(), u"Vexet.Video"_s);
        QVERIFY(mixFiles().isEmpty());
    }

    void aFileOfZeroDurationIsRefused()
    {
        // Header only, with a complete description of its video track: what a capture leaves when it
        // ends before its first fragment.
        const QString in = input(u"empty.mp4"_s, 2, { { 440, 0.5, 0, 2 } });
        const qint64 headerEnd = topLevelBoxEnd(in, u"moov"_s);
        QVERIFY(headerEnd > 0);
        QVERIFY(QFile::resize(in, headerEnd));
        QCOMPARE(topLevelBoxes(in), QStringList({ u"ftyp"_s, u"moov"_s }));
        const Result<QString> out = VideoFile::finishAudio(in);
        QVERIFY(!out.ok());
        QCOMPARE(out.error().localizedDescription(), u"Geçerli video oluşmadı; kayıt çok kısa olabilir."_s);
        QVERIFY(mixFiles().isEmpty());

        QFile zero(m_dir.filePath(u"zero-bytes.mp4"_s));
        QVERIFY(zero.open(QIODevice::WriteOnly));
        zero.close();
        QVERIFY(!VideoFile::finishAudio(zero.fileName()).ok());
        QVERIFY(mixFiles().isEmpty());
    }

    void aFailedExportLeavesNoMixFile()
    {
        // Busy video that makes a file of several megabytes, then a file-size limit on this process
        // of a few hundred kilobytes: the muxer's writes fail part-way.
        const QString in = input(u"big.mp4"_s, 4, { { 440, 0.5, 0, 4 }, { 1000, 0.5, 0, 4 } }, u"snow"_s);
        QVERIFY(QFileInfo(in).size() > 1000000);
        const QByteArray before = TestMedia::digest(in);
        struct rlimit old { };
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &old), 0);
        const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit small = old;
        small.rlim_cur = 300 * 1024;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const Result<QString> out = VideoFile::finishAudio(in);
        setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, previousHandler);

        QVERIFY(!out.ok());
        QVERIFY(!out.error().localizedDescription().isEmpty());
        QVERIFY2(mixFiles().isEmpty(), qPrintable(mixFiles().join(u", "_s)));
        QCOMPARE(TestMedia::digest(in), before);
    }

    void aRelativePathNamesAFileInTheWorkingFolder()
    {
        const QString in = input(u"relative.mp4"_s, 2, { { 440, 0.5, 0, 2 }, { 1000, 0.5, 0, 2 } });
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir.path()));
        const Result<QString> out = VideoFile::finishAudio(u"relative.mp4"_s);
        QDir::setCurrent(previous);
        QVERIFY2(out.ok(), qPrintable(out.ok() ? QString() : out.error().localizedDescription()));
        checkRegularBeside(in, out.value());
        QCOMPARE(MediaReader::packets(out.value()).audio().size(), 1);
    }

    void aMissingFileIsAnError()
    {
        const Result<QString> out = VideoFile::finishAudio(m_dir.filePath(u"nothing-here.mp4"_s));
        QVERIFY(!out.ok());
        QVERIFY(!out.error().localizedDescription().isEmpty());
        QVERIFY(mixFiles().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestVideoFile)
#include "tst_videofile.moc"
