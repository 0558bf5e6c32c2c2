#include "AlertCatcher.h"
#include "FileReveal.h"
#include "RecordingCancellation.h"
#include "RegionSelectionWindow.h"
#include "VideoController.h"
#include "VideoRecorder.h"
#include "VideoSavePanel.h"
#include "VideoSources.h"
#include "X11Connection.h"
#include "X11RecordingDesktop.h"
#include "X11VideoSources.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

class CountingSources : public X11VideoSources {
public:
    // The desktop's real displays, the second one without a name.
    Result<QList<VideoDisplay>> displays() override
    {
        ++queries;
        Result<QList<VideoDisplay>> real = X11VideoSources().displays();
        if (real.ok() && real.value().size() > 1)
            real.value()[1].name.clear();
        return real;
    }
    Result<QList<VideoWindow>> windows() override { return windowList; }

    int queries = 0;
    QList<VideoWindow> windowList;
};

class RecordingReveal : public FileReveal {
public:
    void reveal(const QString& path) override { revealed.append(path); }
    QStringList revealed;
};

} // namespace

// The recording window with the real engine on the virtual desktop; the sources are fixed here.
class TestVideoController : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_store;
    X11RecordingDesktop m_desktop;
    CountingSources m_sources;
    RecordingReveal m_reveal;
    std::unique_ptr<VideoController> m_video;
    QList<std::pair<bool, QString>> m_statuses;

    // The save dialog that is up now, answered with a file name in the test folder.
    bool acceptSaveDialog(const QString& name)
    {
        if (!QTest::qWaitFor(
                [this] { return m_video->savePanel() && m_video->savePanel()->isVisible(); }, 10000))
            return false;
        QFileDialog* panel = m_video->savePanel();
        panel->setDirectory(m_dir.path());
        panel->selectFile(name);
        static_cast<QDialog*>(panel)->accept(); // as the dialog's own button does
        return true;
    }

private Q_SLOTS:
    void init()
    {
        m_store = std::make_unique<QSettings>(m_dir.filePath(u"Vexet.conf"_s), QSettings::IniFormat);
        m_store->clear();
        m_sources = CountingSources();
        m_reveal.revealed.clear();
        m_video = std::make_unique<VideoController>(
            std::make_unique<VideoRecorder>(m_desktop), m_sources, m_reveal, *m_store);
        m_statuses.clear();
        m_video->onStatus = [this](bool busy, const QString& text) { m_statuses.append({ busy, text }); };
    }

    void cleanup() { m_video.reset(); }

    void theWindowShowsEveryControl()
    {
        QCOMPARE(m_video->windowTitle(), u"Vexet — Video kaydı"_s);
        QCOMPARE(m_video->size(), QSize(610, 570));
        const auto items = [](QComboBox* box) {
            QStringList texts;
            for (int i = 0; i < box->count(); ++i)
                texts << box->itemText(i);
            return texts;
        };
        QCOMPARE(items(m_video->kind()), (QStringList { u"Tam ekran"_s, u"Seçili alan"_s, u"Pencere"_s }));
        QCOMPARE(items(m_video->quality()),
            (QStringList { u"1080p — en fazla 1920 × 1080"_s, u"4K — en fazla 3840 × 2160"_s,
                u"Orijinal — H.264 sınırına kadar"_s }));
        QCOMPARE(items(m_video->fps()), (QStringList { u"30 FPS"_s, u"60 FPS"_s }));
        QCOMPARE(m_video->systemAudio()->text(), u"Sistem sesi"_s);
        QCOMPARE(m_video->microphone()->text(), u"Mikrofon (varsayılan giriş aygıtı)"_s);
        QCOMPARE(m_video->cursor()->text(), u"Fare imlecini göster"_s);
        QVERIFY(m_video->systemAudio()->isChecked() && !m_video->microphone()->isChecked()
            && m_video->cursor()->isChecked());
        QCOMPARE(m_video->startButton()->text(), u"Kaydı başlat…"_s);
        QCOMPARE(m_video->refreshButton()->text(), u"Kaynakları yenile"_s);
        QCOMPARE(m_video->info()->text(), u"Kaynaklar yükleniyor…"_s);
    }

    void savedOptionsChooseTheInitialControls()
    {
        VideoOptions { false, true, 60, 2, false }.save(*m_store);
        VideoController video(std::make_unique<VideoRecorder>(m_desktop), m_sources, m_reveal, *m_store);
        QCOMPARE(video.quality()->currentIndex(), 2);
        QCOMPARE(video.fps()->currentIndex(), 1);
        QVERIFY(!video.systemAudio()->isChecked() && video.microphone()->isChecked()
            && !video.cursor()->isChecked());
        QCOMPARE(video.chosenOptions(), (VideoOptions { false, true, 60, 2, false }));
    }

    void sourcesAreQueriedOnceAtATimeAndListed()
    {
        m_video->present();
        m_video->refresh();
        m_video->refresh();
        QVERIFY(m_video->loading());
        QVERIFY(!m_video->startButton()->isEnabled());
        QTRY_VERIFY(!m_video->loading());
        QCOMPARE(m_sources.queries, 1);
        const QList<VideoDisplay> displays = m_video->displays();
        QCOMPARE(displays.size(), 2);
        QCOMPARE(displays[0].geometry, QGuiApplication::screens().at(0)->geometry());
        QCOMPARE(m_video->source()->itemText(0), u"DUMMY0 [%1]"_s.arg(displays[0].sourceId));
        QCOMPARE(m_video->source()->itemText(1), u"Ekran 2 [%1]"_s.arg(displays[1].sourceId));
        QVERIFY(m_video->startButton()->isEnabled());
        QCOMPARE(m_video->info()->text(),
            u"Kaynağı ve ses seçeneklerini belirle; kayıt dosyasının yerini seçerek başla."_s);

        // No other program's window: the list is empty and nothing can start.
        m_video->kind()->setCurrentIndex(2);
        QCOMPARE(m_video->source()->count(), 0);
        QVERIFY(!m_video->startButton()->isEnabled());
    }

    void windowsAreOfferedFilteredAndSorted()
    {
        const quint32 own = static_cast<quint32>(QCoreApplication::applicationPid());
        m_sources.windowList = { VideoWindow { 11, u"Zed"_s, u"z"_s, QRect(0, 0, 300, 300), 5 },
            VideoWindow { 12, u"Mine"_s, u"own"_s, QRect(0, 0, 300, 300), own },
            VideoWindow { 13, u"Abc"_s, QString(), QRect(0, 0, 300, 300), 6 },
            VideoWindow { 14, u"Abc"_s, u"narrow"_s, QRect(0, 0, 32, 500), 6 } };
        m_video->present();
        QTRY_VERIFY(!m_video->loading());
        m_video->kind()->setCurrentIndex(2);
        QCOMPARE(m_video->source()->count(), 2);
        QCOMPARE(m_video->source()->itemText(0), u"Abc — Adsız pencere [13]"_s);
        QCOMPARE(m_video->source()->itemText(1), u"Zed — z [11]"_s);
    }

    void theSaveDialogProposesADatedMp4AndCancellingRecordsNothing()
    {
        QVERIFY(VideoSavePanel::proposedFileName(QDateTime(QDate(2026, 11, 15), QTime(23, 16, 17)))
            == u"Vexet_2026-11-15_23-16-17.mp4"_s);
        m_video->present();
        QTRY_VERIFY(!m_video->loading());
        m_video->startPressed();
        QTRY_VERIFY(m_video->sheetOpen());
        QCOMPARE(m_video->savePanel()->windowTitle(), u"Video kaydını nereye kaydedelim?"_s);
        QCOMPARE(m_video->savePanel()->windowModality(), Qt::WindowModal);
        const QString proposed = m_video->savePanel()->findChild<QLineEdit*>()->text();
        QVERIFY2(proposed.startsWith(u"Vexet_"_s) && proposed.endsWith(u".mp4"_s), qPrintable(proposed));
        const QString videos = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
        QCOMPARE(m_video->savePanel()->directory().absolutePath(),
            QFileInfo(videos).isDir() ? QDir(videos).absolutePath() : QDir::homePath());
        m_video->savePanel()->reject();
        QTRY_VERIFY(!m_video->sheetOpen());
        QVERIFY(recorderStateIsIdle());
        QVERIFY(!m_store->contains(u"video.fps"_s)); // options are saved only when a recording starts
    }

    void aRegionSelectionCoversTheChosenMonitorAndLeavingTheProgramCancelsIt()
    {
        m_video->present();
        QTRY_VERIFY(!m_video->loading());
        m_video->kind()->setCurrentIndex(1);
        m_video->source()->setCurrentIndex(1);
        m_video->startPressed();
        QVERIFY(m_video->selecting());
        QVERIFY(!m_video->isVisible());
        QVERIFY(m_video->overlay());
        QCOMPARE(m_video->overlay()->sheetCount(), 1);
        QTRY_COMPARE(m_video->overlay()->window(0)->geometry(), QGuiApplication::screens().at(1)->geometry());
        QVERIFY(!m_video->overlay()->isFinished());
        // Another client takes the keyboard: the selection is abandoned.
        X11Connection other;
        const xcb_window_t window = xcb_generate_id(other.get());
        xcb_create_window(other.get(), XCB_COPY_FROM_PARENT, window, other.root(), 50, 50, 200, 200, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(other.get(), window);
        other.flush();
        QTest::qWait(200);
        xcb_set_input_focus(other.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        other.flush();
        QTRY_VERIFY(!m_video->selecting());
        QVERIFY(m_video->isVisible());
        QVERIFY(!m_video->sheetOpen());
    }

    void stoppingDuringTheCountdownCancelsWithoutAnAlertAndBringsTheWindowsBack()
    {
        AlertCatcher alerts;
        m_video->present();
        QTRY_VERIFY(!m_video->loading());
        m_video->startPressed();
        QVERIFY(acceptSaveDialog(u"cancelled.mp4"_s));
        QTRY_VERIFY(!m_statuses.isEmpty());
        QVERIFY(m_statuses.first().first); // busy from the start
        QTRY_VERIFY(m_statuses.contains(std::pair<bool, QString>(true, u"3…"_s))); // the countdown
        QVERIFY(!m_video->isVisible()); // own windows out of the way
        QVERIFY(m_store->contains(u"video.fps"_s)); // saved as the recording starts
        m_video->toggle(); // the menu's video command while busy stops it
        QTRY_COMPARE(m_video->info()->text(), u"Kayıt iptal edildi."_s);
        QVERIFY(m_video->isVisible());
        QVERIFY(alerts.alerts().isEmpty());
        QVERIFY(!QFileInfo::exists(m_dir.filePath(u"cancelled.mp4"_s)));
        QCOMPARE(m_statuses.last().first, false);
    }

    void outcomesAreShownAsTheyShouldBe()
    {
        AlertCatcher alerts;
        m_video->show();
        m_video->finished(QString(m_dir.filePath(u"Vexet_test.mp4"_s)));
        QCOMPARE(m_video->info()->text(), u"Kaydedildi: Vexet_test.mp4"_s);
        QCOMPARE(m_reveal.revealed, QStringList { m_dir.filePath(u"Vexet_test.mp4"_s) });
        m_video->finished(videoError(
            u"Kayıt kesildi: x\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n/tmp/a.mp4"_s));
        QCOMPARE(m_video->info()->text(), u"Kayıt tamamlanamadı."_s);
        QTRY_COMPARE(alerts.alerts().size(), 1);
        QCOMPARE(alerts.alerts()[0][1], u"Video kaydı"_s);
        QVERIFY(alerts.alerts()[0][2].endsWith(u"/tmp/a.mp4"_s));
    }

    void whileQuittingOnlyAFailureIsShownAndTheQuitGoesAhead()
    {
        AlertCatcher alerts;
        int replies = 0;
        m_video->onTerminateReply = [&replies](bool quit) { replies += quit ? 1 : 0; };
        m_video->setPendingQuit(true);
        m_video->finished(RecordingCancellation::error());
        QCOMPARE(replies, 1);
        QVERIFY(alerts.alerts().isEmpty());
        m_video->finished(videoError(u"Bozuldu."_s));
        QCOMPARE(replies, 2);
        QCOMPARE(alerts.alerts().size(), 1);
        QCOMPARE(alerts.alerts()[0].mid(1, 2), (QStringList { u"Kayıt tamamlanamadı"_s, u"Bozuldu."_s }));
    }

private:
    bool recorderStateIsIdle() const { return m_video->recorderIdle(); }
};

QTEST_MAIN(TestVideoController)
#include "tst_videocontroller.moc"
