#include "DesktopSettings.h"

#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

DesktopSettings::DesktopSettings(const QStringList& desktops)
    : m_desktops(desktops)
{
}

QStringList DesktopSettings::currentDesktops()
{
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
}

QStringList DesktopSettings::command() const
{
    const auto installed = [](const QString& program, const QStringList& arguments) {
        const QString path = QStandardPaths::findExecutable(program);
        return path.isEmpty() ? QStringList() : QStringList { path } + arguments;
    };
    for (const QString& desktop : m_desktops) {
        const QString name = desktop.toUpper();
        if (name == u"GNOME"_s || name == u"UNITY"_s) {
            if (QStringList found = installed(u"gnome-control-center"_s, { u"privacy"_s }); !found.isEmpty())
                return found;
        }
        if (name == u"KDE"_s) {
            for (const QString& program : { u"systemsettings"_s, u"systemsettings5"_s }) {
                if (QStringList found = installed(program, {}); !found.isEmpty())
                    return found;
            }
        }
    }
    return {};
}

bool DesktopSettings::open() const
{
    const QStringList line = command();
    return !line.isEmpty() && QProcess::startDetached(line.first(), line.mid(1));
}
