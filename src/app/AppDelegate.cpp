#include "AppDelegate.h"

#include "AboutController.h"
#include "Alert.h"
#include "Beeper.h"
#include "OwnWindows.h"
#include "Preferences.h"
#include "SettingsController.h"
#include "ShortcutReport.h"
#include "StatusMenu.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

QIcon statusIcon(bool recording)
{
    return QIcon(recording ? u":/icons/record.svg"_s : u":/icons/viewfinder.svg"_s);
}

bool anyVisibleWindow(Qt::WindowModality modality)
{
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (const QWidget* window : windows) {
        if (window->isVisible() && window->windowModality() == modality)
            return true;
    }
    return false;
}

// A window-modal dialog is what a Mac calls a sheet.
bool hasSheet()
{
    return anyVisibleWindow(Qt::WindowModal);
}

bool hasModalWindow()
{
    return QApplication::activeModalWidget() != nullptr || anyVisibleWindow(Qt::ApplicationModal);
}

} // namespace

AppDelegate::AppDelegate(Preferences& preferences, Services services, QObject* parent)
    : QObject(parent)
    , m_preferences(preferences)
    , m_services(std::move(services))
{
}

AppDelegate::~AppDelegate()
{
    if (QCoreApplication* app = QCoreApplication::instance())
        app->removeEventFilter(this);
    delete m_menu;
    delete m_about;
    delete m_settings;
    delete m_statusWindow;
    qDeleteAll(std::exchange(m_editors, {}));
}

QString AppDelegate::idleToolTip()
{
    return u"Vexet — Ekran görüntüsü"_s;
}

void AppDelegate::applicationDidFinishLaunching()
{
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::instance()->installEventFilter(this);
    m_desktop = { m_services.waylandSession, QSystemTrayIcon::isSystemTrayAvailable() };

    m_statusItem = new QSystemTrayIcon(statusIcon(false), this);
    m_statusItem->setToolTip(idleToolTip());
    // Either button opens the menu; the right one does so through the context menu.
    connect(
        m_statusItem, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger && m_menu)
                m_menu->popup(QCursor::pos());
        });
    rebuildMenu();
    m_statusItem->show();

    if (HotKeysInterface* hotKeys = m_services.hotKeys.get()) {
        hotKeys->onCapture = [self = QPointer(this)](CaptureMode mode) {
            if (self)
                self->capture(mode);
        };
        hotKeys->onChanged = [self = QPointer(this)] {
            if (self)
                self->shortcutsChanged();
        };
        m_launchFailures = hotKeys->resume();
        m_shortcutReportPending = true; // the desktop's answer may come later
    }

    if (!m_preferences.hasWelcomed()) {
        m_preferences.setHasWelcomed(true);
        m_preferences.defaults().sync(); // on disk before the window shows
        showAbout(true);
    }
    if (!m_desktop.tray)
        showStatusWindow();
    reportShortcuts();
}

QString AppDelegate::shortcutLabel(CaptureMode mode) const
{
    const HotKeysInterface* hotKeys = m_services.hotKeys.get();
    return hotKeys ? hotKeys->label(mode) : m_preferences.shortcut(mode).display();
}

void AppDelegate::shortcutsChanged()
{
    rebuildMenu();
    if (m_settings)
        m_settings->shortcutsChanged();
    reportShortcuts();
}

void AppDelegate::reportShortcuts()
{
    const HotKeysInterface* hotKeys = m_services.hotKeys.get();
    if (!m_shortcutReportPending || !hotKeys || !hotKeys->settled())
        return;
    m_shortcutReportPending = false;
    if (auto report = ShortcutReport::atLaunch(*hotKeys, m_launchFailures, m_preferences, m_desktop))
        QTimer::singleShot(0, this, [report = *report] { Alert::show(report.title, report.text); });
}

void AppDelegate::rebuildMenu()
{
    const StatusMenu::Actions actions {
        [this](const QAction* sender) { captureMenu(sender); },
        [this] { openSettings(); },
        [this] { openAbout(); },
        [this] { quit(); },
    };
    QMenu* menu = StatusMenu::build([this](CaptureMode mode) { return shortcutLabel(mode); }, actions);
    if (m_statusItem)
        m_statusItem->setContextMenu(menu);
    if (m_menu)
        m_menu->deleteLater();
    m_menu = menu;
    m_videoMenuItem = StatusMenu::item(menu, CaptureMode::video);
    if (m_statusWindow) {
        for (CaptureMode mode : CaptureModes::allCases)
            m_statusWindow->setTitle(mode, StatusMenu::itemTitle(mode, shortcutLabel(mode)));
        m_statusWindow->setStatus(false, {});
    }
}

void AppDelegate::showStatusWindow()
{
    if (!m_statusWindow) {
        const StatusWindow::Actions actions {
            [this](CaptureMode mode) { capture(mode); },
            [this] { openSettings(); },
            [this] { openAbout(); },
            [this] { quit(); },
        };
        m_statusWindow = new StatusWindow(actions);
        rebuildMenu();
    }
    m_statusWindow->showWindow();
}

void AppDelegate::captureMenu(const QAction* sender)
{
    bool isNumber = false;
    const quint32 tag = sender ? sender->data().toUInt(&isNumber) : 0;
    if (const auto mode = CaptureModes::fromRawValue(isNumber ? tag : 0))
        capture(*mode);
}

bool AppDelegate::videoSideActive() const
{
    const VideoSideInterface* video = m_videoController.get();
    return video && (!video->recorderIdle() || video->selecting() || video->sheetOpen() || video->loading());
}

void AppDelegate::capture(CaptureMode mode)
{
    if (mode == CaptureMode::video) {
        toggleVideo();
        return;
    }
    if (m_videoBusy || videoSideActive() || hasSheet() || hasModalWindow()) {
        Beeper::beep();
        return;
    }
    CaptureServiceInterface* service = m_services.captureService.get();
    if (!service)
        return;
    service->capture(mode, [self = QPointer(this)](const CaptureResult& result) {
        if (self)
            self->captureFinished(result);
    });
}

void AppDelegate::captureFinished(const CaptureResult& result)
{
    if (!result.ok()) {
        Alert::show(u"Yakalama tamamlanamadı"_s, result.error().localizedDescription());
        return;
    }
    if (!result.value())
        return; // the user cancelled the selection
    openEditor(*result.value());
}

void AppDelegate::openEditor(const QImage& image)
{
    const QUuid id = QUuid::createUuid();
    auto* editor = new EditorController(image);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->onClose = [self = QPointer(this), id] {
        if (self)
            self->m_editors.remove(id);
    };
    m_editors.insert(id, editor);
    editor->showWindow();
    // After the window is up, so the confirmation shows in it.
    if (m_preferences.copyAutomatically())
        editor->copyAutomatically(m_services.waylandSession);
}

void AppDelegate::toggleVideo()
{
    if (m_services.missingVideoRequirements) {
        if (const QStringList missing = m_services.missingVideoRequirements(); !missing.isEmpty()) {
            Alert::show(u"Video kaydı için GStreamer bileşenleri gerekli"_s,
                u"Sesli video kaydı şu GStreamer bileşenlerini gerektirir: "_s + missing.join(u", "_s)
                    + u". Ekran görüntüsü özelliklerini kullanmaya devam edebilirsin."_s);
            return;
        }
    }
    if (videoSideActive()) {
        m_videoController->toggle();
        return;
    }
    const CaptureServiceInterface* service = m_services.captureService.get();
    if ((service && service->isBusy()) || hasModalWindow() || hasSheet()) {
        Beeper::beep();
        return;
    }
    if (!m_videoController) {
        if (!m_services.makeVideoController)
            return;
        m_videoController = m_services.makeVideoController();
        if (!m_videoController)
            return;
        m_videoController->onStatus = [self = QPointer(this)](bool busy, const QString& text) {
            if (self)
                self->videoStatusChanged(busy, text);
        };
        m_videoController->onTerminateReply = [self = QPointer(this)](bool quitNow) {
            if (!self)
                return;
            if (quitNow)
                self->terminateNow();
            else
                self->m_terminating = false;
        };
    }
    m_videoController->toggle();
}

void AppDelegate::videoStatusChanged(bool busy, const QString& text)
{
    m_videoBusy = busy;
    if (m_statusItem) {
        m_statusItem->setIcon(statusIcon(busy));
        m_statusItem->setToolTip(busy ? text : idleToolTip());
    }
    const QString videoTitle = busy
        ? u"Kaydı durdur / iptal et"_s
        : StatusMenu::itemTitle(CaptureMode::video, shortcutLabel(CaptureMode::video));
    if (m_videoMenuItem)
        m_videoMenuItem->setText(videoTitle);
    if (m_statusWindow) {
        m_statusWindow->setTitle(CaptureMode::video, videoTitle);
        m_statusWindow->setStatus(busy, text);
    }
}

void AppDelegate::openSettings()
{
    HotKeysInterface* hotKeys = m_services.hotKeys.get();
    if (!hotKeys)
        return;
    if (!m_settings) {
        m_settings = new SettingsController(*hotKeys, m_preferences);
        m_settings->onChange = [self = QPointer(this)] {
            if (self)
                self->rebuildMenu();
        };
    }
    m_settings->showWindow();
}

bool AppDelegate::applicationShouldHandleReopen()
{
    if (!m_desktop.tray)
        showStatusWindow();
    else if (OwnWindows::visibleWindows().isEmpty())
        openSettings();
    return true;
}

void AppDelegate::runCommand(const AppCommand& command)
{
    switch (command.kind()) {
    case AppCommand::Kind::reopen:
        applicationShouldHandleReopen();
        return;
    case AppCommand::Kind::capture:
        capture(command.mode());
        return;
    case AppCommand::Kind::settings:
        openSettings();
        return;
    }
}

void AppDelegate::openAbout()
{
    showAbout(false);
}

void AppDelegate::showAbout(bool firstLaunch)
{
    delete m_about;
    m_about = new AboutController(firstLaunch, m_desktop);
    m_about->setAttribute(Qt::WA_QuitOnClose, false);
    m_about->showWindow();
}

void AppDelegate::quit()
{
    if (m_terminating)
        return;
    m_terminating = true;
    if (applicationShouldTerminate() == TerminateReply::terminateNow)
        terminateNow();
}

AppDelegate::TerminateReply AppDelegate::applicationShouldTerminate()
{
    if (!m_videoController || m_videoController->recorderIdle())
        return TerminateReply::terminateNow;
    m_videoController->setPendingQuit(true);
    m_videoController->stopRecorder();
    return TerminateReply::terminateLater;
}

void AppDelegate::applicationWillTerminate()
{
    if (CaptureServiceInterface* service = m_services.captureService.get())
        service->terminateRunning();
}

void AppDelegate::terminateNow()
{
    applicationWillTerminate();
    if (m_services.exitEventLoop)
        m_services.exitEventLoop();
    else
        QCoreApplication::exit(0);
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    // Quit requests that reach the application object (window shortcuts, the platform) take the
    // same path as the menu's "Çıkış".
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) {
        quit();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
