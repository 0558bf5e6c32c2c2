#include "MediaReader.h"
#include "RecordingCheck.h"
#include "RecordingFiles.h"
#include "ScreenCastDesktop.h"
#include "SwayIpc.h"
#include "Tones.h"
#include "TrayProbe.h"
#include "WaylandInput.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace Qt::StringLiterals;

// The real program records on the Wayland test desktop: its recording window driven with the
// keyboard, the desktop's ScreenCast chooser (asked once, then its remembered choice), the recording
// stopped with the command line and with the tray menu, the desktop ending the stream, and the
// program killed while it records.
class TestWaylandVideoE2e : public QObject {
    Q_OBJECT

    static constexpr int timeoutMs = 30000;
    static inline const QString videoTitle = u"Vexet — Video kaydı"_s;
    static inline const QString savePanelTitle = u"Video kaydını nereye kaydedelim?"_s;

    SwayIpc m_sway;
    WaylandInput m_input;
    TrayProbe m_tray;
    QTemporaryDir m_configHome;
    Tones::Player m_speakerTone;
    Tones::Player m_microphoneTone;
    int m_step = 0;

    static QString vexet() { return qEnvironmentVariable("VEXET_BINARY_DIR") + u"/src/app/vexet"_s; }
    static QDir videos() { return QDir(QDir::home().filePath(u"Videos"_s)); }

    std::unique_ptr<QProcess> startVexet(const QStringList& arguments = {})
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, m_configHome.path());
        process->setProcessEnvironment(environment);
        process->setProcessChannelMode(QProcess::ForwardedChannels);
        process->start(vexet(), arguments);
        return process->waitForStarted(timeoutMs) ? std::move(process) : nullptr;
    }

    int handOver(const QStringList& arguments)
    {
        const auto process = startVexet(arguments);
        return process && process->waitForFinished(timeoutMs) ? process->exitCode() : -1;
    }

    bool waitForWindow(qint64 pid, const QString& title, bool shown)
    {
        return QTest::qWaitFor(
            [&] {
                bool found = false;
                for (const SwayIpc::Window& window : m_sway.windowsOf(pid))
                    found = found || (window.title == title && window.visible && (!shown || window.focused));
                return found == shown;
            },
            timeoutMs);
    }

    // The pointer moves a step over the recorded monitor: wlroots' desktops send a stream's first
    // frame only once something there changes.
    bool wiggle()
    {
        const QRect second = QGuiApplication::screens().at(1)->geometry();
        m_step = (m_step + 1) % 20;
        return m_input.move(second.center() + QPoint(m_step * 10, 0));
    }

    // The hidden file the recording is written to, once the first data is in it.
    QString waitForStaging()
    {
        QString found;
        [[maybe_unused]] const bool started = QTest::qWaitFor(
            [&] {
                wiggle();
                for (const QFileInfo& file : videos().entryInfoList(QDir::Files | QDir::Hidden)) {
                    if (RecordingFiles::isStagingName(file.fileName()) && file.size() > 0)
                        found = file.filePath();
                }
                return !found.isEmpty();
            },
            timeoutMs);
        return found;
    }

    static QString waitForFinished(const QStringList& before)
    {
        QString found;
        [[maybe_unused]] const bool saved = QTest::qWaitFor(
            [&] {
                const QStringList now = videos().entryList({ u"Vexet_*.mp4"_s }, QDir::Files);
                for (const QString& name : now) {
                    if (!before.contains(name))
                        found = videos().filePath(name);
                }
                return !found.isEmpty();
            },
            timeoutMs);
        return found;
    }

    // In the recording window "Tam ekran" is chosen and the keyboard is on the start button. The
    // save dialog proposes a name in the Videos folder.
    void startFromTheWindow(qint64 pid)
    {
        QVERIFY(waitForWindow(pid, videoTitle, true));
        QVERIFY(m_input.keyClick(XKB_KEY_space));
        QVERIFY2(waitForWindow(pid, savePanelTitle, true), "no save dialog");
        QVERIFY(m_input.keyClick(XKB_KEY_Return));
    }

    // A new program recording from its window; staging: the file it records into, once it does.
    std::unique_ptr<QProcess> startRecording(QString* staging)
    {
        auto process = startVexet();
        if (!process || m_tray.waitForItem(process->processId(), timeoutMs).isEmpty()
            || handOver({ u"--capture"_s, u"video"_s }) != 0)
            return process;
        startFromTheWindow(process->processId());
        if (!QTest::currentTestFailed())
            *staging = waitForStaging();
        return process;
    }

    // The tray menu's entry that stops the recording.
    void stopFromTheMenu(qint64 pid)
    {
        const QString item = m_tray.waitForItem(pid, timeoutMs);
        QVERIFY2(m_tray.clickMenuEntry(item, u"Kaydı durdur / iptal et"_s), qPrintable(m_tray.errorString()));
    }

    void record(qint64 pid, const std::function<void()>& stop)
    {
        const QStringList before = videos().entryList({ u"Vexet_*.mp4"_s }, QDir::Files);
        startFromTheWindow(pid);
        if (QTest::currentTestFailed())
            return;
        const QString staging = waitForStaging();
        QVERIFY2(!staging.isEmpty(), "the recording did not begin");
        QElapsedTimer recorded;
        recorded.start();
        while (recorded.elapsed() < 5000) {
            QVERIFY(wiggle());
            QTest::qWait(100);
        }
        stop();
        const double seconds = recorded.elapsed() / 1000.0;
        const QString file = waitForFinished(before);
        QVERIFY2(!file.isEmpty(), "no recording saved");
        QVERIFY(!QFile::exists(staging));
        const QString wrong = RecordingCheck::problems(file, QSize(1280, 1024), 30, seconds, 0.5);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
        QVERIFY(waitForWindow(pid, videoTitle, true));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("VEXET_SCREENCAST_ANSWER"),
            "the desktop casts no screen: run it with --screencast-backend (scripts/setup.sh does)");
        QVERIFY2(m_input.isReady(), qPrintable(m_input.errorString()));
        QSettings settings(m_configHome.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        settings.setValue(u"hasExplainedCommands"_s, true);
        settings.setValue(u"video.system"_s, true);
        settings.setValue(u"video.microphone"_s, true);
        settings.setValue(u"video.cursor"_s, false);
        settings.setValue(u"video.fps"_s, 30);
        settings.sync();
        QVERIFY(m_tray.setHostRegistered(true));
        m_speakerTone = Tones::play(u"vexet_speaker"_s, 440, 0.5);
        m_microphoneTone = Tones::play(u"vexet_mic_feed"_s, 1000, 0.5);
        QVERIFY(m_speakerTone && m_microphoneTone);
    }

    void cleanupTestCase()
    {
        m_speakerTone.reset();
        m_microphoneTone.reset();
    }

    void theDesktopAsksOnceAndTheRecordingStopsFromTheCommandAndTheMenu()
    {
        QVERIFY(ScreenCastDesktop::answer(u"HEADLESS-2"_s));
        const int before = ScreenCastDesktop::choices();
        const auto process = startVexet();
        QVERIFY(process);
        const qint64 pid = process->processId();
        QVERIFY(!m_tray.waitForItem(pid, timeoutMs).isEmpty());

        QCOMPARE(handOver({ u"--capture"_s, u"video"_s }), 0);
        record(pid, [&] { QCOMPARE(handOver({ u"--capture"_s, u"video"_s }), 0); });
        QCOMPARE(ScreenCastDesktop::choices(), before + 1);

        // The desktop remembers the choice: not asked again, whatever it would answer now.
        QVERIFY(ScreenCastDesktop::answer(u"HEADLESS-1"_s));
        record(pid, [&] { stopFromTheMenu(pid); });
        QCOMPARE(ScreenCastDesktop::choices(), before + 1);

        process->terminate();
        QVERIFY(process->waitForFinished(timeoutMs));
        QCOMPARE(process->exitCode(), 0);
    }

    void theDesktopEndingTheStreamShowsTheRecoveryAlert()
    {
        QString staging;
        const auto process = startRecording(&staging);
        QVERIFY(process && !staging.isEmpty());
        const qint64 pid = process->processId();
        QVERIFY(ScreenCastDesktop::closeSessions() > 0);
        // The desktop's backend lets the stream go at the next change on the output.
        for (int step = 0; step < 10; ++step)
            QVERIFY(wiggle());
        QVERIFY2(waitForWindow(pid, u"Vexet"_s, true), "no alert");
        const QStringList recovered = videos().entryList({ u"Vexet-kurtarma-*.mp4"_s }, QDir::Files);
        QCOMPARE(recovered.size(), 1);
        QVERIFY(MediaReader::decode(videos().filePath(recovered.first())).error.isEmpty());
        process->terminate();
        QVERIFY(process->waitForFinished(timeoutMs));
    }

    void aKilledProgramLeavesAPlayableStagingFile()
    {
        QString staging;
        const auto process = startRecording(&staging);
        QVERIFY(process && !staging.isEmpty());
        const qint64 pid = process->processId();
        QTest::qWait(4000);
        ::kill(pid_t(pid), SIGKILL);
        QVERIFY(process->waitForFinished(timeoutMs));
        const MediaReader::Decoded decoded = MediaReader::decode(staging);
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        QVERIFY2(decoded.videoEnd >= 2.5, qPrintable(u"%1 s of video after 4 s"_s.arg(decoded.videoEnd)));
        QFile::remove(staging);
    }
};

QTEST_MAIN(TestWaylandVideoE2e)
#include "tst_wayland_video_e2e.moc"
