#include "AccessibleRoles.h"
#include "AppDelegate.h"
#include "CaptureService.h"
#include "DBusFileReveal.h"
#include "GstSupport.h"
#include "HotKeys.h"
#include "Launch.h"
#include "Platform.h"
#include "Preferences.h"
#include "UnixSignals.h"
#include "VideoController.h"
#include "VideoRecorder.h"

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
    Platform::prepare();
    QApplication app(qtArgc, argv);
    QApplication::setOrganizationName(u"Vexet"_s);
    QApplication::setApplicationName(u"Vexet"_s);
    QApplication::setApplicationVersion(QStringLiteral(VEXET_VERSION));
    QApplication::setDesktopFileName(u"vexet"_s);
    QApplication::setWindowIcon(QIcon(u":/icons/AppIcon.svg"_s));
    // Screen readers see the program's windows as windows (before the first one is made).
    AccessibleRoles::install();

    // Every text of the program is Turkish, so Qt's own dialog texts are too.
    const QLocale turkish(QLocale::Turkish, QLocale::Turkey);
    QLocale::setDefault(turkish);
    QTranslator qtTexts;
    if (qtTexts.load(turkish, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtTexts);

    Preferences& preferences = Preferences::shared();
    const Platform platform(app, preferences.defaults());
    AppDelegate::Services services;
    services.captureService = std::make_unique<CaptureService>(platform.permission(), platform.pointer());
    services.waylandSession = platform.isWayland();
    if (GlobalKeys* globalKeys = platform.globalKeys())
        services.hotKeys = std::make_unique<HotKeys>(*globalKeys, preferences);

    DBusFileReveal fileReveal;
    services.missingVideoRequirements = [wayland = platform.isWayland()] {
        return GstSupport::missingElements(
            wayland ? CaptureStream::Kind::pipeWire : CaptureStream::Kind::x11Display);
    };
    if (platform.recordingDesktop() && platform.videoSources()) {
        services.makeVideoController = [&]() -> std::unique_ptr<VideoSideInterface> {
            return std::make_unique<VideoController>(
                std::make_unique<VideoRecorder>(*platform.recordingDesktop()), *platform.videoSources(),
                fileReveal, preferences.defaults());
        };
    }

    AppDelegate delegate(preferences, std::move(services));
    UnixSignals signalWatcher;
    QObject::connect(&signalWatcher, &UnixSignals::terminationRequested, &delegate, &AppDelegate::quit);

    launch.start(delegate);
    return QApplication::exec();
}
