#include "CapturePlan.h"
#include "ElapsedTime.h"
#include "FragmentedMp4.h"
#include "H264Level.h"
#include "RecorderState.h"
#include "RecordingCancellation.h"
#include "RecordingFileOps.h"
#include "RecordingFiles.h"
#include "RecordingTexts.h"
#include "RegionClip.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// A desktop with one display (output 7 at 1920,0 of 1280 × 1024) and one window (0x400001).
class KnownDesktop : public RecordingDesktopInterface {
public:
    std::optional<CaptureStream> stream(quint32 sourceId) override
    {
        return sourceId == 7 || sourceId == 0x400001 ? std::optional(CaptureStream()) : std::nullopt;
    }
    std::optional<QRect> displayGeometry(quint32 outputId) override
    {
        return outputId == 7 ? std::optional(QRect(1920, 0, 1280, 1024)) : std::nullopt;
    }
    std::optional<QRect> windowGeometry(quint32 windowId) override
    {
        return windowId == 0x400001 ? std::optional(QRect(100, 50, 641, 479)) : std::nullopt;
    }
    std::unique_ptr<ErrorWatch> watchCapture(quint32, bool, ErrorHandler) override { return nullptr; }
    void release(quint32) override { }
};

const VideoDisplay display { 7, u"DUMMY1"_s, QRect(1920, 0, 1280, 1024), 1.0 };

QByteArray box(const char* type, int payload)
{
    QByteArray bytes(8 + payload, '\x11');
    const quint32 size = static_cast<quint32>(bytes.size());
    bytes[0] = static_cast<char>(size >> 24);
    bytes[1] = static_cast<char>(size >> 16);
    bytes[2] = static_cast<char>(size >> 8);
    bytes[3] = static_cast<char>(size);
    bytes.replace(4, 4, type);
    return bytes;
}

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(bytes);
    return file.fileName();
}

} // namespace

// The rules of the recording engine that need neither GStreamer nor a desktop.
class TestRecordingRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void h264Level_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("fps");
        QTest::addColumn<QString>("level");
        QTest::newRow("a small region still gets level 3") << 16 << 16 << 30 << u"3"_s;
        QTest::newRow("720 × 480 at 30 fits level 3 exactly") << 720 << 480 << 30 << u"3"_s;
        QTest::newRow("720 × 576 at 30 is one step more") << 720 << 576 << 30 << u"3.1"_s;
        QTest::newRow("800 × 600") << 800 << 600 << 30 << u"3.1"_s;
        QTest::newRow("1280 × 1024") << 1280 << 1024 << 30 << u"3.2"_s;
        QTest::newRow("1080p at 30") << 1920 << 1080 << 30 << u"4"_s;
        QTest::newRow("1080p at 60") << 1920 << 1080 << 60 << u"4.2"_s;
        QTest::newRow("1662 × 1080 at 60") << 1662 << 1080 << 60 << u"4.2"_s;
        QTest::newRow("portrait 1080 × 1920 at 30") << 1080 << 1920 << 30 << u"4"_s;
        QTest::newRow("4K at 30") << 3840 << 2160 << 30 << u"5.1"_s;
        QTest::newRow("4K at 60") << 3840 << 2160 << 60 << u"5.2"_s;
        QTest::newRow("4096 × 2304 at 30") << 4096 << 2304 << 30 << u"5.2"_s;
        QTest::newRow("4096 × 2304 at 60") << 4096 << 2304 << 60 << u"6"_s;
        // 2 × 2048 is only 128 macroblocks, but its long side is too long for level 3.
        QTest::newRow("a thin strip") << 2 << 2048 << 30 << u"3.1"_s;
    }
    void h264Level()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, fps);
        QFETCH(QString, level);
        QCOMPARE(H264Level::forFrames(width, height, fps), level);
    }

    void elapsedText_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("start") << qint64(0) << u"00:00"_s;
        QTest::newRow("59 s") << qint64(59) << u"00:59"_s;
        QTest::newRow("one minute") << qint64(60) << u"01:00"_s;
        QTest::newRow("3725 s") << qint64(3725) << u"62:05"_s;
        QTest::newRow("100 minutes") << qint64(6000) << u"100:00"_s;
    }
    void elapsedText()
    {
        QFETCH(qint64, seconds);
        QFETCH(QString, text);
        QCOMPARE(ElapsedTime::text(seconds), text);
    }

    void elapsedSecondsPreferTheRecordedDuration()
    {
        QCOMPARE(ElapsedTime::totalSeconds(3725.9, 1.0), 3725);
        QCOMPARE(ElapsedTime::totalSeconds(-2.0, 50.0), 0);
        QCOMPARE(ElapsedTime::totalSeconds(std::nullopt, 12.7), 12);
        QCOMPARE(ElapsedTime::totalSeconds(INFINITY, 8.2), 8);
        QCOMPARE(ElapsedTime::totalSeconds(NAN, 4.99), 4);
    }

    void fileNames()
    {
        const QRegularExpression uuid(u"^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$"_s);
        QVERIFY(uuid.match(RecordingFiles::newUuid()).hasMatch());
        QVERIFY(RecordingFiles::newUuid() != RecordingFiles::newUuid());

        const QString staging = RecordingFiles::stagingPath(u"/videos/sub/Vexet_2024.mp4"_s);
        QVERIFY2(QRegularExpression(u"^/videos/sub/\\.Vexet-recording-[0-9A-F-]{36}\\.mp4$"_s)
                     .match(staging)
                     .hasMatch(),
            qPrintable(staging));
        QVERIFY(RecordingFiles::isStagingName(QFileInfo(staging).fileName()));
        const QString recovery = RecordingFiles::recoveryPath(staging);
        QVERIFY2(QRegularExpression(u"^/videos/sub/Vexet-kurtarma-[0-9A-F-]{36}\\.mp4$"_s)
                     .match(recovery)
                     .hasMatch(),
            qPrintable(recovery));
        QVERIFY(RecordingFiles::isRecoveryName(QFileInfo(recovery).fileName()));
        const QString mix = RecordingFiles::mixPath(staging);
        QVERIFY2(
            QRegularExpression(u"^/videos/sub/\\.Vexet-mix-[0-9A-F-]{36}\\.mp4$"_s).match(mix).hasMatch(),
            qPrintable(mix));
        QVERIFY(RecordingFiles::isMixName(QFileInfo(mix).fileName()));
        QVERIFY(!RecordingFiles::isMixName(u".Vexet-mix-abc.mp4"_s));
        QVERIFY(!RecordingFiles::isStagingName(QFileInfo(recovery).fileName()));
    }

    void statusAndMessageTexts()
    {
        QCOMPARE(RecordingTexts::countdown(3), u"3…"_s);
        QCOMPARE(RecordingTexts::countdown(1), u"1…"_s);
        QCOMPARE(RecordingTexts::preparing(), u"Hazırlanıyor…"_s);
        QCOMPARE(RecordingTexts::withRecovery(u"Bağlantı koptu."_s, u"/v/Vexet-kurtarma-X.mp4"_s),
            u"Bağlantı koptu.\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n/v/Vexet-kurtarma-X.mp4"_s);
        QCOMPARE(RecordingTexts::withStagingKept(u"Erişim engellendi"_s, u"/v/.Vexet-recording-X.mp4"_s),
            u"Erişim engellendi\nGeçici kayıt burada korundu:\n/v/.Vexet-recording-X.mp4"_s);
        QCOMPARE(RecordingTexts::cutShort(u"Akış durdu."_s, u"/v/film.mp4"_s),
            u"Kayıt kesildi: Akış durdu.\nTamamlanabilen video burada saklandı:\n/v/film.mp4"_s);
        QCOMPARE(recorderStateName(RecorderState::Saving), u"saving"_s);
    }

    void cancellationIsRecognised()
    {
        QVERIFY(RecordingCancellation::matches(RecordingCancellation::error()));
        QVERIFY(!RecordingCancellation::matches(videoError(u"x"_s)));
    }

    void regionClip_data()
    {
        QTest::addColumn<QRectF>("region");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QRectF>("clipped");
        const QSizeF size(1280, 1024);
        QTest::newRow("inside") << QRectF(10, 20, 300, 200) << true << QRectF(10, 20, 300, 200);
        QTest::newRow("exactly 16") << QRectF(0, 0, 16, 16) << true << QRectF(0, 0, 16, 16);
        QTest::newRow("15.9 wide") << QRectF(0, 0, 15.9, 100) << false << QRectF();
        QTest::newRow("15.9 high") << QRectF(0, 0, 100, 15.9) << false << QRectF();
        QTest::newRow("across the right edge")
            << QRectF(1200, 10, 300, 100) << true << QRectF(1200, 10, 80, 100);
        QTest::newRow("16 left inside") << QRectF(1264, 0, 100, 100) << true << QRectF(1264, 0, 16, 100);
        QTest::newRow("15.9 left inside") << QRectF(1264.1, 0, 100, 100) << false << QRectF();
        QTest::newRow("wholly outside") << QRectF(1400, 10, 300, 100) << false << QRectF();
        QTest::newRow("above the top") << QRectF(10, -50, 300, 100) << true << QRectF(10, 0, 300, 50);
        Q_UNUSED(size);
    }
    void regionClip()
    {
        QFETCH(QRectF, region);
        QFETCH(bool, accepted);
        QFETCH(QRectF, clipped);
        const std::optional<QRectF> result = RegionClip::clip(region, QSizeF(1280, 1024));
        QCOMPARE(result.has_value(), accepted);
        if (accepted)
            QCOMPARE(*result, clipped);
    }

    void regionPixelsRoundOutwardInsideTheDisplay()
    {
        QCOMPARE(RegionClip::pixels(QRectF(10.5, 20.2, 100.0, 50.5), 1.0, QSize(1280, 1024)),
            QRect(10, 20, 101, 51));
        QCOMPARE(
            RegionClip::pixels(QRectF(10, 20, 100, 50), 2.0, QSize(2560, 2048)), QRect(20, 40, 200, 100));
        QCOMPARE(RegionClip::pixels(QRectF(1200, 0, 80, 16), 1.0, QSize(1280, 1024)), QRect(1200, 0, 80, 16));
    }

    void planFindsTheTargetAgain()
    {
        KnownDesktop desktop;
        const Result<CaptureArea> whole = CapturePlan::resolve(display, desktop);
        QVERIFY(whole.ok());
        QCOMPARE(whole.value().rect, QRect(1920, 0, 1280, 1024));
        QCOMPARE(whole.value().bounds, QRect(1920, 0, 1280, 1024));
        QCOMPARE(whole.value().sourcePixels, QSizeF(1280, 1024));
        QCOMPARE(whole.value().sourceId, 7u);
        QVERIFY(!whole.value().window);

        const Result<CaptureArea> region
            = CapturePlan::resolve(VideoRegion { display, QRectF(1200, 10, 300, 100) }, desktop);
        QVERIFY(region.ok());
        QCOMPARE(region.value().rect, QRect(1920 + 1200, 10, 80, 100));
        QCOMPARE(region.value().bounds, QRect(1920, 0, 1280, 1024));
        QCOMPARE(region.value().sourcePixels, QSizeF(80, 100));

        const Result<CaptureArea> window
            = CapturePlan::resolve(VideoWindow { 0x400001, u"App"_s, u"T"_s, {}, 0 }, desktop);
        QVERIFY(window.ok());
        QCOMPARE(window.value().sourceId, 0x400001u);
        QVERIFY(window.value().window);
        QCOMPARE(window.value().sourcePixels, QSizeF(641, 479));
    }

    void planRefusesWhatIsGone()
    {
        KnownDesktop desktop;
        VideoDisplay gone = display;
        gone.sourceId = 8;
        const Error displayGone = videoError(u"Seçilen ekran artık bağlı değil."_s);
        QCOMPARE(CapturePlan::resolve(gone, desktop).error(), displayGone);
        QCOMPARE(
            CapturePlan::resolve(VideoRegion { gone, QRectF(0, 0, 100, 100) }, desktop).error(), displayGone);
        QCOMPARE(CapturePlan::resolve(VideoWindow { 0x400002, {}, {}, {}, 0 }, desktop).error(),
            videoError(u"Seçilen pencere kapatılmış veya görünür değil."_s));
        const Error invalid = videoError(u"Seçilen alan geçersiz; alanı tekrar seç."_s);
        QCOMPARE(CapturePlan::resolve(VideoRegion { display, QRectF(1400, 0, 300, 300) }, desktop).error(),
            invalid);
        QCOMPARE(
            CapturePlan::resolve(VideoRegion { display, QRectF(0, 0, 15.9, 300) }, desktop).error(), invalid);
        QVERIFY(CapturePlan::resolve(VideoRegion { display, QRectF(0, 0, 16, 16) }, desktop).ok());
    }

    void aCutOffFragmentIsTrimmed()
    {
        QTemporaryDir dir;
        const QByteArray header = box("ftyp", 16) + box("moov", 200);
        const QByteArray fragment = box("moof", 40) + box("mdat", 1000);
        const QByteArray whole = header + fragment + fragment;

        const QString complete = writeFile(dir, u"complete.mp4"_s, whole);
        QCOMPARE(FragmentedMp4::completeLength(complete), qint64(whole.size()));
        QVERIFY(FragmentedMp4::trimIncompleteEnd(complete));
        QCOMPARE(QFileInfo(complete).size(), qint64(whole.size()));

        // The data of the last fragment was written only in part.
        const QString cut
            = writeFile(dir, u"cut.mp4"_s, whole + box("moof", 40) + box("mdat", 1000).left(300));
        QVERIFY(FragmentedMp4::trimIncompleteEnd(cut));
        QCOMPARE(QFileInfo(cut).size(), qint64(whole.size()));

        // The last fragment's header made it, its data did not.
        const QString headerOnly = writeFile(dir, u"moof.mp4"_s, whole + box("moof", 40));
        QVERIFY(FragmentedMp4::trimIncompleteEnd(headerOnly));
        QCOMPARE(QFileInfo(headerOnly).size(), qint64(whole.size()));

        // Cut inside a box header.
        const QString tiny = writeFile(dir, u"tiny.mp4"_s, whole + QByteArray("\0\0", 2));
        QCOMPARE(FragmentedMp4::completeLength(tiny), qint64(whole.size()));

        // Not an MP4 file: left alone.
        const QString other = writeFile(dir, u"other.bin"_s, QByteArray(5000, 'x'));
        QVERIFY(!FragmentedMp4::completeLength(other).has_value());
        QVERIFY(!FragmentedMp4::trimIncompleteEnd(other));
        QCOMPARE(QFileInfo(other).size(), qint64(5000));
        QVERIFY(!FragmentedMp4::completeLength(dir.filePath(u"missing.mp4"_s)).has_value());
    }

    void fileOperations()
    {
        QTemporaryDir dir;
        const QString staging = dir.filePath(u".Vexet-recording-A.mp4"_s);
        QVERIFY(!RecordingFileOps::createEmpty(staging));
        QCOMPARE(RecordingFileOps::size(staging), qint64(0));
        // A second create of the same name fails: the file is always new.
        QVERIFY(RecordingFileOps::createEmpty(staging).has_value());
        QVERIFY(RecordingFileOps::createEmpty(dir.filePath(u"missing/x.mp4"_s)).has_value());

        const QString destination = dir.filePath(u"film.mp4"_s);
        QFile old(destination);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old");
        old.close();
        QFile fresh(staging);
        QVERIFY(fresh.open(QIODevice::WriteOnly));
        fresh.write("new video");
        fresh.close();
        QVERIFY(!RecordingFileOps::move(staging, destination));
        QVERIFY(!QFile::exists(staging));
        QFile result(destination);
        QVERIFY(result.open(QIODevice::ReadOnly));
        QCOMPARE(result.readAll(), QByteArray("new video"));

        const std::optional<Error> missing = RecordingFileOps::move(staging, destination);
        QVERIFY(missing.has_value());
        QVERIFY(!missing->localizedDescription().isEmpty());
        QVERIFY(!RecordingFileOps::size(staging).has_value());
    }
};

QTEST_GUILESS_MAIN(TestRecordingRules)
#include "tst_recordingrules.moc"
