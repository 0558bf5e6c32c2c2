#include "BellCounter.h"
#include "DesktopProbe.h"
#include "MediaReader.h"
#include "MovingPicture.h"
#include "VexetProcess.h"
#include "VideoPictures.h"
#include "VideoSourceList.h"
#include "VideoTrayToolTip.h"
#include "VideoWindowDriver.h"
#include "X11VideoSources.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace {

using Control = VideoWindowDriver::Control;

const QString idleToolTip = u"Vexet — Ekran görüntüsü"_s;
const QString editorTitle = u"Vexet — Önizleme ve kırpma"_s;
const QString recoveryLeadIn = u"Kurtarma dosyası (oynatılabilirliği garanti edilmez):"_s;

// The tray's tooltip through a recording, in order: idle, preparing, the countdown, the first ten
// seconds, stopping, saving.
QStringList statusOrder()
{
    QStringList texts { idleToolTip, u"Hazırlanıyor…"_s, u"3…"_s, u"2…"_s, u"1…"_s };
    for (int second = 0; second < 10; ++second)
        texts.append(u"00:0"_s + QString::number(second));
    return texts + QStringList { u"Kayıt tamamlanıyor…"_s, u"Video kaydediliyor…"_s };
}

} // namespace

// The recording flow of the real program on the virtual desktop: started and stopped with its
// shortcut, the window and the save dialog used with real keys and pointer, the result checked
// in the file it wrote, in what it asked the file manager, and on screen.
class TestVideoEndToEnd : public QObject {
    Q_OBJECT

    DesktopProbe m_probe;
    BellCounter m_bells;
    VideoWindowDriver m_window { m_probe };
    std::unique_ptr<QTemporaryDir> m_configHome;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QProcess> m_fileManager;
    std::unique_ptr<QWidget> m_shown;

    QString settingsFile() const { return m_configHome->filePath(u"Vexet/Vexet.conf"_s); }
    QString revealedFile() const { return m_configHome->filePath(u"revealed.txt"_s); }

    // Every file in the recordings folder, hidden ones too, the file manager's list aside.
    QStringList folderEntries() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    // The hidden file the recording goes to while it runs.
    std::optional<qint64> stagingSize() const
    {
        const QFileInfoList staging
            = QDir(m_folder->path())
                  .entryInfoList({ u".Vexet-recording-*.mp4"_s }, QDir::Files | QDir::Hidden);
        return staging.size() == 1 ? std::optional(staging.first().size()) : std::nullopt;
    }

    // Waits until the recording has written its first fragments.
    bool waitUntilRecording()
    {
        qint64 first = 0;
        return QTest::qWaitFor([&] { return (first = stagingSize().value_or(0)) > 0; }, 30000)
            && QTest::qWaitFor([&] { return stagingSize().value_or(0) > first; }, 30000);
    }

    xcb_window_t startVexet(VexetProcess& vexet)
    {
        if (!vexet.start())
            return XCB_NONE;
        m_window.attach(vexet.pid());
        std::optional<xcb_window_t> icon;
        if (!QTest::qWaitFor([&] { return (icon = m_probe.trayIcon(vexet.pid())).has_value(); }, 30000))
            return XCB_NONE;
        return *icon;
    }

    bool trayShows(xcb_window_t trayIcon, const QString& resource, QString* why)
    {
        return QTest::qWaitFor(
            [&] { return (*why = VideoPictures::trayIconDifference(m_probe, trayIcon, resource)).isEmpty(); },
            20000);
    }

    qsizetype editors(const VexetProcess& vexet)
    {
        return m_probe.windowsTitled(vexet.pid(), editorTitle).size();
    }

    // The stand-in file manager, once it owns its name on the session bus.
    bool startFileManager()
    {
        m_fileManager = std::make_unique<QProcess>();
        m_fileManager->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_fileManager->start(QString::fromUtf8(VEXET_FAKE_FILE_MANAGER), { revealedFile() });
        QByteArray said;
        return m_fileManager->waitForStarted(10000)
            && QTest::qWaitFor(
                [&] {
                    said += m_fileManager->readAllStandardOutput();
                    return said.contains("ready\n");
                },
                10000);
    }

    QStringList revealed() const
    {
        QFile file(revealedFile());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    // The whole second monitor covered with a known picture, in a window of this process.
    QImage showPatternOnSecondMonitor()
    {
        QScreen* second = QGuiApplication::screens().at(1);
        const QImage image = VideoPictures::pattern(second->size());
        auto* label = new QLabel;
        label->setPixmap(QPixmap::fromImage(image));
        label->setWindowFlags(Qt::FramelessWindowHint);
        m_shown.reset(label);
        m_shown->winId();
        m_shown->windowHandle()->setScreen(second);
        m_shown->setGeometry(second->geometry());
        m_shown->showFullScreen();
        if (!QTest::qWaitForWindowExposed(m_shown.get())
            || !QTest::qWaitFor([&] { return m_probe.windows().grab(second->geometry()) == image; }, 20000))
            return {};
        return image;
    }

    // The region overlay of the program covering the given monitor.
    bool overlayCovers(const VexetProcess& vexet, const QRect& monitor)
    {
        const QList<xcb_window_t> windows = m_probe.mappedClientWindows(vexet.pid());
        return std::any_of(windows.cbegin(), windows.cend(),
            [&](xcb_window_t window) { return m_probe.windows().rootGeometry(window) == monitor; });
    }

    void drag(const QPoint& from, const QPoint& to)
    {
        X11Input& input = m_probe.input();
        input.movePointer(from);
        input.pause(50);
        input.pressButton(1);
        input.pause(50);
        input.movePointer((from + to) / 2);
        input.pause(50);
        input.movePointer(to);
        input.pause(50);
        input.releaseButton(1);
    }

    // Opens the window and takes the given kind and source with real clicks and keys.
    bool chooseSource(int kindDowns, int sourceDowns)
    {
        return m_window.open() && (kindDowns == 0 || m_window.choose(Control::kind, kindDowns))
            && (sourceDowns == 0 || m_window.choose(Control::source, sourceDowns));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_probe.isReady(), "needs the virtual desktop (X server with XTest)");
        QVERIFY2(m_bells.isReady(), "needs the X server's XKB extension");
        QVERIFY(QFileInfo(VexetProcess::binary()).isExecutable());
        QVERIFY(QFileInfo(QString::fromUtf8(VEXET_FAKE_FILE_MANAGER)).isExecutable());
        QCOMPARE(QGuiApplication::screens().size(), 2);
        QTemporaryDir settings;
        QVERIFY2(m_window.learnLayout(settings.filePath(u"Vexet.conf"_s)), qPrintable(m_window.why()));
    }

    void init()
    {
        m_configHome = std::make_unique<QTemporaryDir>();
        m_folder = std::make_unique<QTemporaryDir>();
        QSettings settings(settingsFile(), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        settings.sync();
    }

    void cleanup()
    {
        m_shown.reset();
        if (m_fileManager) {
            m_fileManager->terminate();
            m_fileManager->waitForFinished(10000);
            m_fileManager.reset();
        }
    }

    void aRegionOfTheSecondMonitorIsRecordedSavedAndShownInTheFileManager()
    {
        QVERIFY2(startFileManager(), "the stand-in file manager did not start");
        const QImage picture = showPatternOnSecondMonitor();
        QVERIFY2(!picture.isNull(), "the pattern did not show on the second monitor");
        const QRect monitor = QGuiApplication::screens().at(1)->geometry();

        VexetProcess vexet(m_configHome->path());
        const xcb_window_t icon = startVexet(vexet);
        QVERIFY2(icon != XCB_NONE, "no tray icon appeared");
        VideoTrayToolTip toolTip(m_probe, vexet.pid(), icon, statusOrder());
        QVERIFY2(toolTip.prepare(), "the tooltips could not be drawn here");

        QVERIFY2(chooseSource(1, 1), qPrintable(m_window.why())); // "Seçili alan", the second monitor
        QVERIFY2(m_window.pressStart(), qPrintable(m_window.why()));

        // The overlay covers the second monitor with its frozen, dimmed picture.
        QVERIFY2(
            QTest::qWaitFor([&] { return overlayCovers(vexet, monitor); }, 20000), "no overlay on monitor 2");
        QVERIFY(!m_window.isShown());
        const QPoint probe(600, 700);
        const QRgb bright = picture.pixel(probe);
        const auto dimmed = [](int c) { return c * (255 - 97) / 255; };
        QVERIFY2(
            QTest::qWaitFor(
                [&] {
                    const QRgb got
                        = m_probe.windows().grab(QRect(monitor.topLeft() + probe, QSize(1, 1))).pixel(0, 0);
                    return qAbs(qRed(got) - dimmed(qRed(bright))) <= 2
                        && qAbs(qGreen(got) - dimmed(qGreen(bright))) <= 2
                        && qAbs(qBlue(got) - dimmed(qBlue(bright))) <= 2;
                },
                20000),
            "the overlay does not show the dimmed monitor");
        const QRect region(200, 160, 640, 360); // on the second monitor
        drag(monitor.topLeft() + region.topLeft(), monitor.topLeft() + region.topLeft() + QPoint(640, 360));

        const QString destination = m_folder->filePath(u"Region_Clip.mp4"_s);
        QVERIFY2(m_window.typeIntoSaveDialog(destination), qPrintable(m_window.why()));
        // Rest the pointer on the tray icon before the recording starts, so its tooltip is up early.
        QVERIFY2(
            toolTip.waitFor(idleToolTip, 20000), qPrintable(u"the tooltip read: "_s + toolTip.timeline()));
        QVERIFY2(m_window.confirmSaveDialog(), qPrintable(m_window.why()));

        // The countdown and the elapsed time, as the tray's tooltip, in their order. A key press
        // hides a tooltip and Qt shows the next one only after the pointer has rested 700 ms, so
        // the first second of the countdown passes before the tooltip is back.
        const QStringList order = statusOrder();
        const bool counted = toolTip.watchUntil(
            [&] { return order.indexOf(toolTip.last()) >= order.indexOf(u"00:02"_s); }, 30000);
        const QString seen = toolTip.timeline();
        QVERIFY2(counted,
            qPrintable(u"the tooltip read: %1 (and %2 times something else)"_s.arg(seen).arg(
                toolTip.unrecognised())));
        const QStringList read = toolTip.seen();
        for (qsizetype i = 1; i < read.size(); ++i)
            QVERIFY2(order.indexOf(read.at(i - 1)) < order.indexOf(read.at(i)),
                qPrintable(u"out of order: "_s + seen));
        for (const QString& text : { u"1…"_s, u"00:00"_s, u"00:01"_s })
            QVERIFY2(read.contains(text), qPrintable(u"no "_s + text + u"; the tooltip read: "_s + seen));
        QString why;
        QVERIFY2(trayShows(icon, u":/icons/record.svg"_s, &why), qPrintable(why));
        QVERIFY2(!m_window.isShown(), "the recording window stayed on screen while recording");

        // The shortcut again stops; the window comes back, the file manager is asked to show the file.
        QVERIFY(m_probe.input().typeCombination(VideoWindowDriver::videoKeys()));
        QVERIFY2(QTest::qWaitFor([&] { return m_window.isShown(); }, 60000),
            "the recording window did not come back");
        QVERIFY2(
            QTest::qWaitFor([&] { return !revealed().isEmpty(); }, 20000), "the file manager was not asked");
        QCOMPARE(revealed(), QStringList { u"file://"_s + destination });
        QCOMPARE(folderEntries(), QStringList { QFileInfo(destination).fileName() });
        QVERIFY2(trayShows(icon, u":/icons/viewfinder.svg"_s, &why), qPrintable(why));
        QVERIFY2(
            toolTip.waitFor(idleToolTip, 20000), qPrintable(u"the tooltip read: "_s + toolTip.timeline()));

        // H.264 of the region's size with one audio track, decoding to its end, showing the region.
        const MediaReader::Packets packets = MediaReader::packets(destination);
        QVERIFY2(packets.error.isEmpty(), qPrintable(packets.error));
        QCOMPARE(packets.video().size(), 1);
        QCOMPARE(packets.audio().size(), 1);
        const MediaReader::Track video = packets.video().first();
        QVERIFY2(video.isH264(), qPrintable(video.caps));
        QCOMPARE(QSize(video.width, video.height), region.size());
        QVERIFY2(packets.audio().first().isAac(), qPrintable(packets.audio().first().caps));
        QVERIFY2(video.endTime - video.firstTime >= 1.5,
            qPrintable(QString::number(video.endTime - video.firstTime)));
        const MediaReader::Decoded decoded = MediaReader::decode(destination, 20);
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        QVERIFY(decoded.videoFrames >= 30);
        const double difference = VideoPictures::meanDifference(decoded.frame, picture.copy(region));
        QVERIFY2(
            difference < 8, qPrintable(u"the recording differs from the region by %1"_s.arg(difference)));

        QVERIFY(vexet.terminateAndWait());
    }

    void aRecordedWindowThatClosesLeavesARecoveryFile()
    {
        auto* moving = new MovingPicture(QRect(60, 120, 480, 320), QColor(40, 120, 200), true);
        moving->setWindowTitle(u"Hareketli içerik"_s);
        m_shown.reset(moving);
        m_shown->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_shown.get()));

        VexetProcess vexet(m_configHome->path());
        const xcb_window_t icon = startVexet(vexet);
        QVERIFY2(icon != XCB_NONE, "no tray icon appeared");
        QVERIFY2(chooseSource(2, 0), qPrintable(m_window.why())); // "Pencere"
        // The window's place in the program's list, which leaves out the program's own windows.
        const Result<QList<VideoWindow>> all = X11VideoSources().windows();
        QVERIFY(all.ok());
        const QList<VideoWindow> offered
            = VideoSourceList::offered(all.value(), static_cast<quint32>(vexet.pid()));
        const auto found = std::find_if(offered.cbegin(), offered.cend(),
            [&](const VideoWindow& window) { return window.sourceId == m_shown->winId(); });
        QVERIFY2(found != offered.cend(), "the moving window is not offered");
        const int index = static_cast<int>(found - offered.cbegin());
        if (index > 0)
            QVERIFY2(m_window.choose(Control::source, index), qPrintable(m_window.why()));
        QVERIFY2(m_window.pressStart(), qPrintable(m_window.why()));
        const QString destination = m_folder->filePath(u"window.mp4"_s);
        QVERIFY2(m_window.typeIntoSaveDialog(destination), qPrintable(m_window.why()));
        QVERIFY2(m_window.confirmSaveDialog(), qPrintable(m_window.why()));
        QVERIFY2(waitUntilRecording(), "the recording never wrote anything");

        m_shown.reset(); // the recorded window closes
        const QString alert = m_window.readAndCloseAlert();
        QVERIFY2(!alert.isEmpty(), qPrintable(m_window.why()));
        QVERIFY2(alert.startsWith(u"Video kaydı\n\n"_s), qPrintable(alert));
        const qsizetype leadIn = alert.indexOf(recoveryLeadIn + u'\n');
        QVERIFY2(leadIn > 0, qPrintable(alert));
        const QString recovery = alert.mid(leadIn + recoveryLeadIn.size() + 1).section(u'\n', 0, 0);
        const QFileInfo kept(recovery);
        QVERIFY2(kept.isFile() && kept.size() > 0, qPrintable(alert));
        QCOMPARE(kept.absolutePath(), QFileInfo(destination).absolutePath());
        QVERIFY2(kept.fileName().startsWith(u"Vexet-kurtarma-"_s), qPrintable(recovery));
        QCOMPARE(folderEntries(), QStringList { kept.fileName() }); // no destination, no hidden leftovers

        QCOMPARE(vexet.process().state(), QProcess::Running);
        QString why;
        QVERIFY2(trayShows(icon, u":/icons/viewfinder.svg"_s, &why), qPrintable(why));
        QVERIFY(m_window.isShown());
        QVERIFY(vexet.terminateAndWait());
    }

    void terminatingDuringARecordingExitsOnceTheFileIsComplete()
    {
        VexetProcess vexet(m_configHome->path());
        const xcb_window_t icon = startVexet(vexet);
        QVERIFY2(icon != XCB_NONE, "no tray icon appeared");
        QVERIFY2(chooseSource(0, 1), qPrintable(m_window.why())); // "Tam ekran", the second monitor
        QVERIFY2(m_window.pressStart(), qPrintable(m_window.why()));
        const QString destination = m_folder->filePath(u"whole-monitor.mp4"_s);
        QVERIFY2(m_window.typeIntoSaveDialog(destination), qPrintable(m_window.why()));
        QVERIFY2(m_window.confirmSaveDialog(), qPrintable(m_window.why()));
        QVERIFY2(waitUntilRecording(), "the recording never wrote anything");

        int exitCode = -1;
        QVERIFY2(vexet.terminateAndWait(&exitCode), qPrintable(u"exit code %1"_s.arg(exitCode)));

        // At the moment the program is gone, the file is whole: a regular MP4 that plays to its end.
        QCOMPARE(folderEntries(), QStringList { QFileInfo(destination).fileName() });
        const MediaReader::Packets packets = MediaReader::packets(destination);
        QVERIFY2(packets.error.isEmpty(), qPrintable(packets.error));
        QCOMPARE(packets.video().size(), 1);
        QCOMPARE(packets.audio().size(), 1);
        QVERIFY(packets.video().first().isH264());
        QCOMPARE(QSize(packets.video().first().width, packets.video().first().height),
            QGuiApplication::screens().at(1)->size());
        const MediaReader::Decoded decoded = MediaReader::decode(destination);
        QVERIFY2(decoded.error.isEmpty(), qPrintable(decoded.error));
        QVERIFY(decoded.videoFrames > 0);
    }

    void aScreenshotDuringTheCountdownOnlyBeeps()
    {
        VexetProcess vexet(m_configHome->path());
        const xcb_window_t icon = startVexet(vexet);
        QVERIFY2(icon != XCB_NONE, "no tray icon appeared");
        QVERIFY2(chooseSource(0, 0), qPrintable(m_window.why())); // "Tam ekran", the first monitor
        QVERIFY2(m_window.pressStart(), qPrintable(m_window.why()));
        const QString destination = m_folder->filePath(u"never.mp4"_s);
        QVERIFY2(m_window.typeIntoSaveDialog(destination), qPrintable(m_window.why()));
        const int bellsBefore = m_bells.settledCount();
        QVERIFY2(m_window.confirmSaveDialog(), qPrintable(m_window.why()));

        // The staging file is there but empty while the countdown runs.
        QVERIFY2(QTest::qWaitFor([&] { return stagingSize() == 0; }, 20000), "no countdown");
        QVERIFY(m_probe.input().typeCombination(VideoWindowDriver::screenKeys()));
        QVERIFY2(QTest::qWaitFor([&] { return m_bells.count() > bellsBefore; }, 10000), "no beep");
        QCOMPARE(stagingSize(), std::optional<qint64>(0)); // still counting down

        // The video shortcut cancels the countdown: nothing is kept and nothing is said.
        QVERIFY(m_probe.input().typeCombination(VideoWindowDriver::videoKeys()));
        QVERIFY2(QTest::qWaitFor([&] { return m_window.isShown(); }, 30000),
            "the recording window did not come back");
        QVERIFY(folderEntries().isEmpty());
        QString why;
        QVERIFY2(trayShows(icon, u":/icons/viewfinder.svg"_s, &why), qPrintable(why));
        // A screenshot that had been taken would have its editor up by now.
        QVERIFY(!QTest::qWaitFor([&] { return editors(vexet) > 0; }, 2000));
        QVERIFY(m_probe.windowsTitled(vexet.pid(), u"Vexet"_s).isEmpty());
        QCOMPARE(m_bells.settledCount(), bellsBefore + 1);
        QVERIFY(vexet.terminateAndWait());
    }
};

QTEST_MAIN(TestVideoEndToEnd)
#include "tst_video_e2e.moc"
