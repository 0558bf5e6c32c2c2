#include "AppDelegate.h"
#include "Preferences.h"
#include "UnixSignals.h"

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

    // Every text of the program is Turkish, so Qt's own dialog texts are too.
    const QLocale turkish(QLocale::Turkish, QLocale::Turkey);
    QLocale::setDefault(turkish);
    QTranslator qtTexts;
    if (qtTexts.load(turkish, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtTexts);

    AppDelegate delegate(Preferences::shared(), AppDelegate::Services {});
    UnixSignals signalWatcher;
    QObject::connect(&signalWatcher, &UnixSignals::terminationRequested, &delegate, &AppDelegate::quit);

    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    return QApplication::exec();
}
