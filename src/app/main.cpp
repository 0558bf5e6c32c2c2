#include "AppDelegate.h"
#include "CaptureService.h"
#include "DBusFileReveal.h"
#include "GstSupport.h"
#include "HotKeys.h"
#include "Launch.h"
#include "Preferences.h"
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
#include <QTranslator>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    // The command line comes first: --help and --version need no display, and a command for the
    // Vexet already running is handed to it without starting a second one.
    Launch launch(argc, argv);
    if (const std::optional<int> status = launch.handOver())
        return *status;

    int qtArgc = 1; // Qt's own options are not taken (CommandLine.h)
    QApplication app(qtArgc, argv);
    QApplication::setOrganizationName(u"Vexet"_s);
    QApplication::setApplicationName(u"Vexet"_s);
    QApplication::setApplicationVersion(QStringLiteral(VEXET_VERSION));
    QApplication::setDesktopFileName(u"vexet"_s);
    QApplication::setWindowIcon(QIcon(u":/icons/AppIcon.svg"_s));

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
    UnixSignals signalWatcher;
    QObject::connect(&signalWatcher, &UnixSignals::terminationRequested, &delegate, &AppDelegate::quit);

    launch.start(delegate);
    return QApplication::exec();
}
