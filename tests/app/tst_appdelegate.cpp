#include "AppDelegate.h"
#include "Beeper.h"
#include "Fakes.h"
#include "Preferences.h"
#include "StatusMenu.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

class TestAppDelegate : public QObject {
    Q_OBJECT

    struct Harness {
        FakeCaptureService* capture = nullptr;
        FakeHotKeys* hotKeys = nullptr;
        FakeVideoSide* video = nullptr;
        int videoControllersMade = 0;
        int exits = 0;
        std::unique_ptr<AppDelegate> delegate;
    };

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Preferences> m_preferences;

    void makePreferences(bool welcomed)
    {
        m_preferences.reset(); // written back before its folder goes
        m_dir = std::make_unique<QTemporaryDir>();
        m_preferences = std::make_unique<Preferences>(
            std::make_unique<QSettings>(m_dir->filePath(u"Vexet.conf"_s), QSettings::IniFormat));
        m_preferences->setHasWelcomed(welcomed);
    }

    std::unique_ptr<Harness> launch(QStringList hotKeyFailures = {})
    {
        auto harness = std::make_unique<Harness>();
        AppDelegate::Services services;
        auto capture = std::make_unique<FakeCaptureService>();
        auto hotKeys = std::make_unique<FakeHotKeys>();
        harness->capture = capture.get();
        harness->hotKeys = hotKeys.get();
        hotKeys->failures = std::move(hotKeyFailures);
        hotKeys->preferences = m_preferences.get();
        services.captureService = std::move(capture);
        services.hotKeys = std::move(hotKeys);
        Harness* raw = harness.get();
        services.makeVideoController = [raw]() -> std::unique_ptr<VideoSideInterface> {
            auto video = std::make_unique<FakeVideoSide>();
            raw->video = video.get();
            ++raw->videoControllersMade;
            return video;
        };
        services.exitEventLoop = [raw] { ++raw->exits; };
        harness->delegate = std::make_unique<AppDelegate>(*m_preferences, std::move(services));
        harness->delegate->applicationDidFinishLaunching();
        return harness;
    }

    // Runs fn while the next modal alert is up, and returns the alert's texts after closing it.
    static QStringList nextAlertTexts(const std::function<void()>& fn)
    {
        QStringList texts;
        QTimer poll;
        poll.setInterval(20);
        QObject::connect(&poll, &QTimer::timeout, [&texts, &poll] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            texts = { box->windowTitle(), box->text(), box->informativeText() };
            const QList<QAbstractButton*> buttons = box->buttons();
            for (QAbstractButton* button : buttons)
                texts.append(button->text());
            poll.stop();
            box->accept();
        });
        poll.start();
        fn();
        if (!QTest::qWaitFor([&texts] { return !texts.isEmpty(); }, 10000))
            qWarning("no alert appeared");
        return texts;
    }

private Q_SLOTS:
    void init() { makePreferences(true); }

    void launchShowsTheIdleTrayIconAndItsMenu()
    {
        auto h = launch();
        QSystemTrayIcon* item = h->delegate->statusItem();
        QVERIFY(item);
        QCOMPARE(item->toolTip(), u"Vexet — Ekran görüntüsü"_s);
        QVERIFY(!item->icon().isNull());
        QCOMPARE(item->contextMenu(), h->delegate->menu());
        QCOMPARE(h->hotKeys->resumes, 1);
        QVERIFY(QApplication::topLevelWidgets().isEmpty() || !h->delegate->about());
        QVERIFY(!QApplication::quitOnLastWindowClosed());

        const QList<QAction*> items = h->delegate->menu()->actions();
        QCOMPARE(items.size(), 9);
        QCOMPARE(items[0]->text(), u"Vexet"_s);
        QVERIFY(!items[0]->isEnabled());
        const QStringList titles { u"Alan seçerek yakala     ⌥⇧⌘3"_s, u"Pencere yakala     ⌥⇧⌘4"_s,
            u"Ekranı yakala     ⌥⇧⌘5"_s, u"Video kaydı başlat / durdur     ⌥⇧⌘G"_s };
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(items[i + 1]->text(), titles[i]);
            QCOMPARE(items[i + 1]->data().toUInt(), quint32(i + 1));
            QVERIFY(items[i + 1]->shortcut().isEmpty());
        }
        QVERIFY(items[5]->isSeparator());
        QCOMPARE(items[6]->text(), u"Ayarlar…"_s);
        QCOMPARE(items[7]->text(), u"Vexet hakkında"_s);
        QCOMPARE(items[8]->text(), u"Çıkış"_s);
        QCOMPARE(h->delegate->videoMenuItem(), items[4]);
    }

    void rebuildingReadsTheStoreAndGivesTheVideoItemItsIdleTitle()
    {
        auto h = launch();
        m_preferences->set(
            Shortcut { 0, Shortcut::controlKey | Shortcut::cmdKey, u"A"_s }, CaptureMode::window);
        h->delegate->videoStatusChanged(true, u"00:05"_s);
        QMenu* before = h->delegate->menu();
        h->delegate->rebuildMenu();
        QVERIFY(h->delegate->menu() != before);
        QCOMPARE(
            StatusMenu::item(h->delegate->menu(), CaptureMode::window)->text(), u"Pencere yakala     ⌃⌘A"_s);
        QCOMPARE(h->delegate->videoMenuItem()->text(), u"Video kaydı başlat / durdur     ⌥⇧⌘G"_s);
        QCOMPARE(h->delegate->statusItem()->contextMenu(), h->delegate->menu());
    }

    void menuTagsOutsideOneToFourDoNothing()
    {
        auto h = launch();
        const int beeps = Beeper::count();
        for (const QVariant& tag : { QVariant(0), QVariant(5), QVariant(1000), QVariant() }) {
            QAction action;
            action.setData(tag);
            h->delegate->captureMenu(&action);
        }
        h->delegate->captureMenu(nullptr);
        QVERIFY(h->capture->requests.isEmpty());
        QCOMPARE(h->video, nullptr);
        QCOMPARE(Beeper::count(), beeps);

        StatusMenu::item(h->delegate->menu(), CaptureMode::screen)->trigger();
        QCOMPARE(h->capture->requests, QList<CaptureMode> { CaptureMode::screen });
    }

    void hotKeysReachTheCaptureDispatch()
    {
        auto h = launch();
        QVERIFY(h->hotKeys->onCapture);
        h->hotKeys->onCapture(CaptureMode::region);
        QCOMPARE(h->capture->requests, QList<CaptureMode> { CaptureMode::region });
    }

    void screenshotsAreRefusedWhileTheVideoSideIsBusy()
    {
        auto h = launch();
        h->delegate->capture(CaptureMode::video);
        QVERIFY(h->video);
        const auto refused = [&h](const char* what) {
            const int beeps = Beeper::count();
            h->delegate->capture(CaptureMode::window);
            QVERIFY2(h->capture->requests.isEmpty(), what);
            QVERIFY2(Beeper::count() == beeps + 1, what);
        };
        h->video->idle = false;
        refused("counting down or recording");
        h->video->idle = true;
        h->video->isSelecting = true;
        refused("selecting a region");
        h->video->isSelecting = false;
        h->video->isSheetOpen = true;
        refused("save dialog open");
        h->video->isSheetOpen = false;
        h->video->isLoading = true;
        refused("loading sources");
        h->video->isLoading = false;
        h->delegate->videoStatusChanged(true, u"00:01"_s);
        refused("video reported busy");
        h->delegate->videoStatusChanged(false, QString());
        h->delegate->capture(CaptureMode::window);
        QCOMPARE(h->capture->requests.size(), 1);
    }

    void screenshotsAreRefusedWhileADialogIsOpen()
    {
        auto h = launch();
        for (Qt::WindowModality modality : { Qt::WindowModal, Qt::ApplicationModal }) {
            QWidget owner;
            owner.show();
            QDialog dialog(&owner);
            dialog.setWindowModality(modality);
            dialog.show();
            QVERIFY(QTest::qWaitForWindowExposed(&dialog));
            const int beeps = Beeper::count();
            h->delegate->capture(CaptureMode::screen);
            h->delegate->capture(CaptureMode::video);
            QCOMPARE(Beeper::count(), beeps + 2);
            QVERIFY(h->capture->requests.isEmpty());
            QCOMPARE(h->videoControllersMade, 0);
        }
    }

    void aFailedCaptureShowsAnAlertAndACancelShowsNothing()
    {
        auto h = launch();
        h->delegate->capture(CaptureMode::screen);
        QVERIFY(h->capture->completion);
        const QStringList texts = nextAlertTexts(
            [&h] { h->capture->completion(Error(u"Vexet"_s, 3, u"Ekran resmi alınamadı."_s)); });
        QCOMPARE(texts,
            (QStringList {
                u"Vexet"_s, u"Yakalama tamamlanamadı"_s, u"Ekran resmi alınamadı."_s, u"Tamam"_s }));

        h->delegate->capture(CaptureMode::region);
        h->capture->completion(std::optional<QImage>());
        QTest::qWait(100);
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
        QVERIFY(h->delegate->editors().isEmpty());
    }

    void everyCaptureOpensItsOwnEditorAndClosingOneKeepsTheOther()
    {
        auto h = launch();
        m_preferences->setCopyAutomatically(false);
        QGuiApplication::clipboard()->clear();
        QImage first(40, 30, QImage::Format_RGB32);
        first.fill(Qt::red);
        QImage second(20, 10, QImage::Format_RGB32);
        second.fill(Qt::blue);
        for (const QImage& image : { first, second }) {
            h->delegate->capture(CaptureMode::window);
            h->capture->completion(std::optional<QImage>(image));
        }
        QCOMPARE(h->delegate->editors().size(), 2);
        QList<EditorController*> editors = h->delegate->editors().values();
        for (EditorController* editor : editors) {
            QVERIFY(QTest::qWaitForWindowExposed(editor));
            QCOMPARE(editor->windowTitle(), u"Vexet — Önizleme ve kırpma"_s);
        }
        QVERIFY(QGuiApplication::clipboard()->image().isNull()); // copying was switched off
        QPointer<EditorController> closing = editors.first();
        closing->close();
        QCOMPARE(h->delegate->editors().size(), 1);
        QVERIFY(h->delegate->editors().values().first() == editors.last());
        QTRY_VERIFY(!closing); // gone once closed
        QCOMPARE(h->exits, 0); // closing a window never quits
    }

    void copyingAutomaticallyPutsTheCaptureOnTheClipboardOnceItShows()
    {
        auto h = launch();
        QImage image(33, 17, QImage::Format_RGB32);
        image.fill(QColor(10, 200, 30));
        const int beeps = Beeper::count();
        h->delegate->capture(CaptureMode::screen);
        h->capture->completion(std::optional<QImage>(image));
        EditorController* editor = h->delegate->editors().values().first();
        QVERIFY(editor->isVisible());
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), image);
        QCOMPARE(Beeper::count(), beeps); // no sound is part of it
    }

    void aCompletionAfterTheDelegateIsGoneDoesNothing()
    {
        auto h = launch();
        h->delegate->capture(CaptureMode::screen);
        auto completion = h->capture->completion;
        h->delegate.reset();
        completion(Error(u"Vexet"_s, 1, u"x"_s));
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
    }

    void theVideoCommandTogglesTheWindowAndStopsARecordingEvenWithADialogOpen()
    {
        auto h = launch();
        h->capture->busy = true;
        const int beeps = Beeper::count();
        h->delegate->capture(CaptureMode::video);
        QCOMPARE(Beeper::count(), beeps + 1);
        QCOMPARE(h->videoControllersMade, 0);
        h->capture->busy = false;

        h->delegate->capture(CaptureMode::video);
        h->delegate->capture(CaptureMode::video);
        QCOMPARE(h->videoControllersMade, 1);
        QCOMPARE(h->video->toggles, 2);

        h->video->idle = false;
        QWidget owner;
        owner.show();
        QDialog sheet(&owner);
        sheet.setWindowModality(Qt::WindowModal);
        sheet.show();
        h->delegate->toggleVideo();
        QCOMPARE(h->video->toggles, 3);
        QCOMPARE(Beeper::count(), beeps + 1);
    }

    void missingRecordingPartsAreNamedInAnAlertAndNothingElseHappens()
    {
        AppDelegate::Services services;
        services.missingVideoRequirements = [] { return QStringList { u"x264enc"_s, u"pulsesrc"_s }; };
        int made = 0;
        services.makeVideoController = [&made]() -> std::unique_ptr<VideoSideInterface> {
            ++made;
            return std::make_unique<FakeVideoSide>();
        };
        AppDelegate delegate(*m_preferences, std::move(services));
        const QStringList texts = nextAlertTexts([&delegate] { delegate.capture(CaptureMode::video); });
        QCOMPARE(texts.mid(1),
            (QStringList { u"Video kaydı için GStreamer bileşenleri gerekli"_s,
                u"Sesli video kaydı şu GStreamer bileşenlerini gerektirir: x264enc, pulsesrc. "
                u"Ekran görüntüsü özelliklerini kullanmaya devam edebilirsin."_s,
                u"Tamam"_s }));
        QCOMPARE(made, 0);
        QCOMPARE(delegate.videoController(), nullptr);
    }

    void theStatusHandlerTurnsTheTrayRedAndBack()
    {
        auto h = launch();
        const qint64 idleIcon = h->delegate->statusItem()->icon().cacheKey();
        h->delegate->videoStatusChanged(true, u"2…"_s);
        QVERIFY(h->delegate->videoBusy());
        QCOMPARE(h->delegate->statusItem()->toolTip(), u"2…"_s);
        QVERIFY(h->delegate->statusItem()->icon().cacheKey() != idleIcon);
        QCOMPARE(h->delegate->videoMenuItem()->text(), u"Kaydı durdur / iptal et"_s);
        h->delegate->videoStatusChanged(false, u"Kaydedildi"_s);
        QVERIFY(!h->delegate->videoBusy());
        QCOMPARE(h->delegate->statusItem()->toolTip(), u"Vexet — Ekran görüntüsü"_s);
        QCOMPARE(h->delegate->videoMenuItem()->text(), u"Video kaydı başlat / durdur     ⌥⇧⌘G"_s);
    }

    void unregisteredShortcutsAreListedInOneAlertAfterLaunch()
    {
        makePreferences(false);
        std::unique_ptr<Harness> h;
        const QStringList texts = nextAlertTexts([this, &h] {
            h = launch({ u"Pencere yakala: ⌥⇧⌘4"_s, u"Ekranı yakala: ⌥⇧⌘5"_s });
            // The alert waits until the launch has returned, behind the welcome window.
            QCOMPARE(QApplication::activeModalWidget(), nullptr);
            QVERIFY(h->delegate->about() && h->delegate->about()->isVisible());
        });
        QCOMPARE(texts[1], u"Kısayolları kontrol et"_s);
        QCOMPARE(texts[2],
            u"Şu kısayollar kaydedilemedi. Sistem tepsisindeki simgeden Ayarlar’ı açıp değiştirebilirsin:\n"
            u"Pencere yakala: ⌥⇧⌘4\nEkranı yakala: ⌥⇧⌘5"_s);
    }

    void settingsOpenOnceAndTheirChangesRebuildTheMenu()
    {
        auto h = launch();
        h->delegate->openSettings();
        SettingsController* settings = h->delegate->settings();
        QVERIFY(settings && settings->isVisible());
        QCOMPARE(settings->windowTitle(), u"Vexet — Ayarlar"_s);
        settings->close();
        h->delegate->openSettings();
        QCOMPARE(h->delegate->settings(), settings);
        QVERIFY(settings->isVisible());
        QMenu* before = h->delegate->menu();
        settings->onChange();
        QVERIFY(h->delegate->menu() != before);
        settings->close();
    }

    void reopeningWithoutAVisibleWindowOpensTheSettings()
    {
        auto h = launch();
        h->delegate->openAbout();
        QVERIFY(h->delegate->applicationShouldHandleReopen());
        QCOMPARE(h->delegate->settings(), nullptr);
        h->delegate->about()->close();
        QVERIFY(h->delegate->applicationShouldHandleReopen());
        QVERIFY(h->delegate->settings() && h->delegate->settings()->isVisible());
        h->delegate->settings()->close();
    }

    void quittingWaitsForARunningRecording()
    {
        auto h = launch();
        h->delegate->capture(CaptureMode::video);
        h->video->idle = false;
        QCOMPARE(h->delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::terminateLater);
        QVERIFY(h->video->pendingQuit);
        QCOMPARE(h->video->stops, 1);

        // Ctrl+Q in any window reaches the same path; a second request while waiting changes nothing.
        h->video->pendingQuit = false;
        QCoreApplication::postEvent(QCoreApplication::instance(), new QEvent(QEvent::Quit));
        QTRY_VERIFY(h->video->pendingQuit);
        QCOMPARE(h->video->stops, 2);
        h->delegate->quit();
        QCOMPARE(h->video->stops, 2);
        QCOMPARE(h->capture->terminations, 0);
        QCOMPARE(h->exits, 0);

        h->video->onTerminateReply(true);
        QCOMPARE(h->capture->terminations, 1);
        QCOMPARE(h->exits, 1);
    }

    void quittingWithoutARecordingEndsARunningScreenshotTool()
    {
        auto h = launch();
        QCOMPARE(h->delegate->applicationShouldTerminate(), AppDelegate::TerminateReply::terminateNow);
        StatusMenu::item(h->delegate->menu(), CaptureMode::screen)->trigger();
        h->delegate->menu()->actions().last()->trigger(); // "Çıkış"
        QCOMPARE(h->capture->terminations, 1);
        QCOMPARE(h->exits, 1);
    }

    void aRefusedQuitCanBeAskedAgain()
    {
        auto h = launch();
        h->delegate->capture(CaptureMode::video);
        h->video->idle = false;
        h->delegate->quit();
        h->video->onTerminateReply(false);
        QCOMPARE(h->exits, 0);
        h->delegate->quit();
        QCOMPARE(h->video->stops, 2);
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
