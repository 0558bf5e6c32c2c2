#include "VideoSourceList.h"

#include <algorithm>

using namespace Qt::StringLiterals;

QString VideoSourceList::displayTitle(const VideoDisplay& display, int position)
{
    const QString name = display.name.isEmpty() ? u"Ekran "_s + QString::number(position) : display.name;
    return name + u" ["_s + QString::number(display.sourceId) + u']';
}

QString VideoSourceList::windowTitle(const VideoWindow& window)
{
    const QString application = window.appName.isEmpty() ? u"Uygulama"_s : window.appName;
    const QString title = window.title.isEmpty() ? u"Adsız pencere"_s : window.title;
    return application + u" — "_s + title + u" ["_s + QString::number(window.sourceId) + u']';
}

QList<VideoWindow> VideoSourceList::offered(QList<VideoWindow> windows, quint32 ownPid)
{
    windows.removeIf([ownPid](const VideoWindow& window) {
        return (window.pid != 0 && window.pid == ownPid) || window.geometry.width() <= 32
            || window.geometry.height() <= 32;
    });
    std::stable_sort(windows.begin(), windows.end(),
        [](const VideoWindow& a, const VideoWindow& b) { return a.appName < b.appName; });
    return windows;
}
