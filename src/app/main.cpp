#include "AppDelegate.h"
#include "CaptureService.h"
#include "DBusFileReveal.h"
#include "GstSupport.h"
#include "HotKeys.h"
#include "Preferences.h"
#include "SingleInstance.h"
#include "UnixSignals.h"
#include "VideoController.h"
#include "VideoRecorder.h"
#include "X11GlobalKeys.h"
#include "X11RecordingDesktop.h"
#include "X11ScreenCapturePermission.h"
#include "X11VideoSources.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QTimer>
#include <QTranslator>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(u"Vexet"_s);
    QApplication::setApplicationName(u"Vexet"_s);
    QApplication::setApplicationVersion(u"1.2"_s);
    QApplication::setDesktopFileName(u"vexet"_s);
    QApplication::setWindowIcon(QIcon(u":/icons/AppIcon.svg"_s));

    // A second start only asks the running program to show itself.
    SingleInstance instance;
    if (instance.askRunningInstanceToReopen())
        return 0;
    instance.listen();

    // Every text of the program is Turkish, so Qt's own dialog texts are too.
    const QLocale turkish(QLocale::Turkish, QLocale::Turkey);
    QLocale::setDefault(turkish);
    QTranslator qtTexts;
    if (qtTexts.load(turkish, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtTexts);

    Preferences& preferences = Preferences::shared();
    X11ScreenCapturePermission permission;
    std::unique_ptr<X11GlobalKeys> globalKeys;
    AppDelegate::Services services;
    services.captureService = std::make_unique<CaptureService>(permission);
    if (auto* x11 = app.nativeInterface<QNativeInterface::QX11Application>()) {
        xcb_connection_t* connection = x11->connection();
        globalKeys = std::make_unique<X11GlobalKeys>(
            connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
        services.hotKeys = std::make_unique<HotKeys>(*globalKeys, preferences);
    }

    X11RecordingDesktop recordingDesktop;
    X11VideoSources videoSources;
    DBusFileReveal fileReveal;
    services.missingVideoRequirements = [] { return GstSupport::missingElements(); };
    services.makeVideoController = [&]() -> std::unique_ptr<VideoSideInterface> {
        return std::make_unique<VideoController>(std::make_unique<VideoRecorder>(recordingDesktop),
            videoSources, fileReveal, preferences.defaults());
    };

    AppDelegate delegate(preferences, std::move(services));
    QObject::connect(&instance, &SingleInstance::reopenRequested, &delegate,
        [&delegate] { delegate.applicationShouldHandleReopen(); });
    UnixSignals signalWatcher;
    QObject::connect(&signalWatcher, &UnixSignals::terminationRequested, &delegate, &AppDelegate::quit);

    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    return QApplication::exec();
}
