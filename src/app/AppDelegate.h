#pragma once

#include "AboutController.h"
#include "AppCommand.h"
#include "CaptureMode.h"
#include "CaptureServiceInterface.h"
#include "DesktopTexts.h"
#include "EditorController.h"
#include "HotKeysInterface.h"
#include "SettingsController.h"
#include "StatusWindow.h"
#include "VideoSideInterface.h"

#include <QAction>
#include <QHash>
#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QUuid>
#include <functional>
#include <memory>

class Preferences;

class QSystemTrayIcon;

// The tray application: the status icon and its menu, the dispatch of capture commands with the
// rules that refuse them, the about and welcome window, and the one path every quit request takes.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    // The parts the application joins. Any may be missing; its commands then do nothing.
    struct Services {
        std::unique_ptr<CaptureServiceInterface> captureService;
        std::unique_ptr<HotKeysInterface> hotKeys;
        // Makes the recording window on first use.
        std::function<std::unique_ptr<VideoSideInterface>()> makeVideoController;
        // The parts recording needs that are missing on this system; empty when it can record.
        std::function<QStringList()> missingVideoRequirements;
        // A Wayland session: the texts say so, and because the desktop takes clipboard data only
        // from a program that has had the user's input, the automatic copy is repeated at the
        // editor's first input.
        bool waylandSession = false;
        // Ends the event loop once quitting is decided; QCoreApplication::exit(0) when unset.
        std::function<void()> exitEventLoop;
    };

    AppDelegate(Preferences& preferences, Services services, QObject* parent = nullptr);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    void rebuildMenu();
    void captureMenu(const QAction* sender);
    void capture(CaptureMode mode);
    void toggleVideo();
    void openSettings();
    // Another start of the program: on a desktop without a tray the Vexet window shows again;
    // otherwise the settings window opens when none of ours is visible.
    bool applicationShouldHandleReopen();
    // A command from the command line, this start's or a later one's, run as the menu runs it.
    void runCommand(const AppCommand& command);
    void openAbout();
    void showAbout(bool firstLaunch);
    // Every quit request (menu, Ctrl+Q, signals, session) ends here.
    void quit();

    enum class TerminateReply { terminateNow, terminateLater };
    TerminateReply applicationShouldTerminate();
    void applicationWillTerminate();

    // The recording side's report: busy flag and status text.
    void videoStatusChanged(bool busy, const QString& text);

    QSystemTrayIcon* statusItem() const { return m_statusItem; }
    QMenu* menu() const { return m_menu; }
    QAction* videoMenuItem() const { return m_videoMenuItem; }
    bool videoBusy() const { return m_videoBusy; }
    AboutController* about() const { return m_about; }
    // The window with the menu's commands on a desktop without a tray; none until shown.
    StatusWindow* statusWindow() const { return m_statusWindow; }
    const DesktopFacts& desktop() const { return m_desktop; }
    SettingsController* settings() const { return m_settings; }
    VideoSideInterface* videoController() const { return m_videoController.get(); }
    // Every open editor window, each under its own id; closing one removes it.
    const QHash<QUuid, EditorController*>& editors() const { return m_editors; }

    static QString idleToolTip();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool videoSideActive() const;
    // What starts the mode from the keyboard, as the menu and the Vexet window show it.
    QString shortcutLabel(CaptureMode mode) const;
    void shortcutsChanged();
    // The launch alert about the shortcuts, once the platform has answered.
    void reportShortcuts();
    void captureFinished(const CaptureResult& result);
    void openEditor(const QImage& image);
    void showStatusWindow();
    void terminateNow();

    Preferences& m_preferences;
    Services m_services;
    QSystemTrayIcon* m_statusItem = nullptr;
    QPointer<QMenu> m_menu;
    QPointer<QAction> m_videoMenuItem;
    std::unique_ptr<VideoSideInterface> m_videoController;
    QPointer<AboutController> m_about;
    QPointer<SettingsController> m_settings;
    QPointer<StatusWindow> m_statusWindow;
    DesktopFacts m_desktop;
    QHash<QUuid, EditorController*> m_editors;
    bool m_videoBusy = false;
    QStringList m_launchFailures;
    bool m_shortcutReportPending = false;
    bool m_terminating = false;
};
