#include "MediaReader.h"
#include "Mp4Boxes.h"
#include "PrivateSoundServer.h"
#include "RecordCheckProcess.h"
#include "RecordingFiles.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <cstring>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Mounts a small file system of its own over a folder, in a private mount namespace, runs the command
// there, then leaves a listing of the folder and any recovery file in another folder.
const auto mountScript = uR"(dir=$1; out=$2; options=$3; shift 3
mount -t tmpfs -o "$options" vexet-test "$dir" || exit 90
"$@"; rc=$?
ls -A "$dir" > "$out/listing"
cp "$dir"/Vexet-kurtarma-* "$out"/ 2>/dev/null
exit $rc)"_s;

QStringList vexetFiles(const QString& folder)
{
    return QDir(folder).entryList({ u".Vexet-*"_s, u"Vexet-*"_s }, QDir::Files | QDir::Hidden);
}

} // namespace

// The recording process meets real faults: it is killed, its disk fills up, its folder is read-only,
// its sound server goes away, its folder turns read-only before what was recorded can be rescued.
// vexet-record-check runs the real engine in a process of its own.
class TestRecordingFaults : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QProcess m_content;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    void showContent(const QString& pattern)
    {
        m_content.kill();
        m_content.waitForFinished();
        m_content.start(
            QDir(qEnvironmentVariable("VEXET_BINARY_DIR")).filePath(u"tests/video/vexet-moving-content"_s),
            { u"0"_s, u"0"_s, u"800"_s, u"600"_s, u"30"_s, pattern });
        QVERIFY(m_content.waitForStarted());
        QTest::qWait(700);
        QCOMPARE(m_content.state(), QProcess::Running);
    }

    static bool namespacesAvailable()
    {
        QProcess probe;
        probe.start(u"unshare"_s, { u"-rm"_s, u"true"_s });
        return probe.waitForFinished(10000) && probe.exitStatus() == QProcess::NormalExit
            && probe.exitCode() == 0;
    }

    void checkPlayable(const QString& file, double atLeastSeconds)
    {
        const MediaReader::Decoded decoded = MediaReader::decode(file);
        QVERIFY2(decoded.error.isEmpty(), qPrintable(file + u": "_s + decoded.error));
        QVERIFY2(decoded.videoFrames > 0 && decoded.videoEnd >= atLeastSeconds,
            qPrintable(u"%1: %2 pictures, %3 s"_s.arg(file).arg(decoded.videoFrames).arg(decoded.videoEnd)));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QFile::exists(RecordCheckProcess::program()));
    }

    void cleanup()
    {
        m_content.kill();
        m_content.waitForFinished();
    }

    void aKilledRecordingLeavesAPlayableStagingFile()
    {
        showContent(u"bars"_s);
        const QString folder = path(u"killed"_s);
        QVERIFY(QDir().mkpath(folder));
        RecordCheckProcess driver;
        driver.start({ u"--region"_s, u"DUMMY0:0,0,800,600"_s, u"--seconds"_s, u"60"_s, u"--out"_s,
            folder + u"/film.mp4"_s });
        QVERIFY(driver.waitForLine(u"status recording 00:00"_s));
        QTest::qWait(5000);
        driver.kill();
        QCOMPARE(driver.exitStatus(), QProcess::CrashExit);

        const QStringList left = vexetFiles(folder);
        QCOMPARE(left.size(), 1);
        QVERIFY(RecordingFiles::isStagingName(left.first()));
        const QString staging = QDir(folder).filePath(left.first());
        // A header first, then fragments, at least one per track about every second.
        const QStringList boxes = topLevelBoxes(staging);
        QCOMPARE(boxes.mid(0, 2), QStringList({ u"ftyp"_s, u"moov"_s }));
        QCOMPARE(boxes.count(u"moov"_s), 1);
        const MediaReader::Packets packets = MediaReader::packets(staging);
        QCOMPARE(packets.video().size(), 1);
        QCOMPARE(packets.audio().size(), 1);
        const double perTrack = static_cast<double>(boxes.count(u"moof"_s)) / packets.tracks.size();
        QVERIFY2(perTrack >= 4, qPrintable(u"%1 fragments per track in 5 s"_s.arg(perTrack)));
        // Unfinished, the pictures keep the B-frames' reordering delay: two frames at 30 fps at most.
        const double late = packets.video().first().firstTime - packets.audio().first().firstTime;
        QVERIFY2(late >= 0 && late <= 2.0 / 30 + 1e-6,
            qPrintable(u"the pictures start %1 s after the sound"_s.arg(late)));
        checkPlayable(staging, 4.0);
    }

    void aFullDiskEndsInAPlayableRecoveryFile()
    {
        if (!namespacesAvailable())
            QSKIP("this system allows no private mount namespaces (unshare -rm), which the small disk needs");
        // Noise takes about 6 MB a second, and the muxer cuts a fragment early at every key frame x264
        // puts in where the noise changes the whole picture: a disk of 24 MB holds several whole
        // fragments, however they fall, before the write that fails.
        showContent(u"noise"_s);
        const QString disk = path(u"disk"_s);
        const QString out = path(u"disk-out"_s);
        QVERIFY(QDir().mkpath(disk) && QDir().mkpath(out));
        RecordCheckProcess driver;
        driver.start({ u"--region"_s, u"DUMMY0:0,0,800,600"_s, u"--seconds"_s, u"60"_s, u"--out"_s,
                         disk + u"/film.mp4"_s },
            { u"unshare"_s, u"-rm"_s, u"sh"_s, u"-c"_s, mountScript, u"sh"_s, disk, out, u"size=24m"_s });
        QVERIFY(driver.waitForExit(90000));
        QVERIFY2(driver.exitCode() != 90, "the small disk could not be mounted");
        QCOMPARE(driver.exitCode(), 1);
        QVERIFY(driver.statusTexts().contains(u"recording 00:00"_s));
        const QString message = driver.errorMessage();
        const QString lead = u"\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s;
        QVERIFY2(message.contains(lead), qPrintable(message));
        const QString recovery = message.section(lead, 1);
        QCOMPARE(QFileInfo(recovery).absolutePath(), disk);
        QVERIFY(RecordingFiles::isRecoveryName(QFileInfo(recovery).fileName()));
        QFile listing(QDir(out).filePath(u"listing"_s));
        QVERIFY(listing.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(listing.readAll()).trimmed(), QFileInfo(recovery).fileName());
        checkPlayable(QDir(out).filePath(QFileInfo(recovery).fileName()), 2.0);
    }

    void anUnwritableFolderFailsAtTheStartAndLeavesNothing()
    {
        if (!namespacesAvailable())
            QSKIP("this system allows no private mount namespaces (unshare -rm), which the read-only folder "
                  "needs");
        const QString folder = path(u"read-only"_s);
        const QString out = path(u"read-only-out"_s);
        QVERIFY(QDir().mkpath(folder) && QDir().mkpath(out));
        const QStringList places { QDir::tempPath(), qEnvironmentVariable("XDG_RUNTIME_DIR"),
            QDir::currentPath(), m_dir.path() };
        QList<QStringList> before;
        for (const QString& place : places)
            before.append(vexetFiles(place));

        RecordCheckProcess driver;
        driver.start({ u"--display"_s, u"DUMMY0"_s, u"--microphone"_s, u"--out"_s, folder + u"/film.mp4"_s },
            { u"unshare"_s, u"-rm"_s, u"sh"_s, u"-c"_s, mountScript, u"sh"_s, folder, out, u"ro,size=1m"_s });
        QVERIFY(driver.waitForExit(30000));
        QVERIFY2(driver.exitCode() != 90, "the read-only folder could not be mounted");
        QCOMPARE(driver.exitCode(), 1);
        QCOMPARE(driver.statusTexts(), QStringList({ u"starting Hazırlanıyor…"_s, u"idle "_s }));
        QCOMPARE(driver.errorMessage(), u"Kayıt dosyası bu klasörde oluşturulamadı:\n"_s + folder);
        QFile listing(QDir(out).filePath(u"listing"_s));
        QVERIFY(listing.open(QIODevice::ReadOnly));
        QCOMPARE(listing.readAll().trimmed(), QByteArray());
        for (qsizetype i = 0; i < places.size(); ++i)
            QCOMPARE(vexetFiles(places.at(i)), before.at(i));
    }

    void theSoundServerGoingAwayEndsInARecoveryFile()
    {
        showContent(u"bars"_s);
        PrivateSoundServer server(path(u"pulse"_s));
        QVERIFY(server.start());
        RecordCheckProcess driver;
        const QString folder = path(u"sound"_s);
        QVERIFY(QDir().mkpath(folder));
        driver.start({ u"--region"_s, u"DUMMY0:0,0,800,600"_s, u"--seconds"_s, u"60"_s, u"--out"_s,
                         folder + u"/film.mp4"_s },
            {}, server.clientEnvironment());
        QVERIFY(driver.waitForLine(u"status recording 00:02"_s));
        server.kill();
        QVERIFY(driver.waitForExit(30000));
        QCOMPARE(driver.exitCode(), 1);
        QCOMPARE(driver.statusTexts().count(u"stopping Kayıt sonlandırılıyor…"_s), 1);
        const QString message = driver.errorMessage();
        const QString lead = u"\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s;
        QVERIFY2(message.contains(lead), qPrintable(message));
        const QString recovery = message.section(lead, 1);
        QCOMPARE(vexetFiles(folder), QStringList({ QFileInfo(recovery).fileName() }));
        checkPlayable(recovery, 1.5);
    }

    void aRescueThatCannotMoveKeepsTheStagingFileWhereItIs()
    {
        showContent(u"bars"_s);
        PrivateSoundServer server(path(u"pulse-locked"_s));
        QVERIFY(server.start());
        const QString folder = path(u"locked"_s);
        QVERIFY(QDir().mkpath(folder));
        // The folder is made read-only while the recording runs. Permission bits do not bind root, so
        // as root the engine runs without the capabilities that override them.
        QStringList wrapper;
        if (::geteuid() == 0)
            wrapper = { u"setpriv"_s, u"--bounding-set"_s, u"-dac_override,-dac_read_search,-fowner"_s };
        RecordCheckProcess driver;
        driver.start({ u"--region"_s, u"DUMMY0:0,0,800,600"_s, u"--seconds"_s, u"60"_s, u"--out"_s,
                         folder + u"/film.mp4"_s },
            wrapper, server.clientEnvironment());
        QVERIFY(driver.waitForLine(u"status recording 00:02"_s));
        const QFileDevice::Permissions writable = QFile::permissions(folder);
        QVERIFY(
            QFile::setPermissions(folder, writable & ~(QFileDevice::WriteOwner | QFileDevice::WriteUser)));
        server.kill();
        const bool ended = driver.waitForExit(30000);
        QFile::setPermissions(folder, writable);
        QVERIFY(ended);
        QCOMPARE(driver.exitCode(), 1);
        QCOMPARE(driver.statusTexts().count(u"stopping Kayıt sonlandırılıyor…"_s), 1);

        // The message describes the failed move, then names the staging file, which is still there.
        const QString message = driver.errorMessage();
        const QString lead = u"\nGeçici kayıt burada korundu:\n"_s;
        QVERIFY2(message.contains(lead), qPrintable(message));
        QCOMPARE(message.section(lead, 0, 0), QString::fromLocal8Bit(std::strerror(EACCES)));
        const QString staging = message.section(lead, 1);
        QCOMPARE(QFileInfo(staging).absolutePath(), folder);
        QVERIFY(RecordingFiles::isStagingName(QFileInfo(staging).fileName()));
        QCOMPARE(vexetFiles(folder), QStringList({ QFileInfo(staging).fileName() }));
        checkPlayable(staging, 1.5);
    }
};

QTEST_GUILESS_MAIN(TestRecordingFaults)
#include "tst_recordingfaults.moc"
