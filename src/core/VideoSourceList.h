#pragma once

#include "VideoTarget.h"

#include <QList>
#include <QString>

// How the recording window lists what can be recorded.
class VideoSourceList {
public:
    // "<name> [<output id>]", or "Ekran <position> [<output id>]" for a display without a name;
    // position counts from 1.
    static QString displayTitle(const VideoDisplay& display, int position);
    // "<application> — <title> [<window id>]", with "Uygulama" and "Adsız pencere" for the missing parts.
    static QString windowTitle(const VideoWindow& window);
    // The windows worth offering: not the program's own (ownPid), more than 32 points on each side;
    // sorted by application name, windows of one application keeping their order.
    static QList<VideoWindow> offered(QList<VideoWindow> windows, quint32 ownPid);
};
