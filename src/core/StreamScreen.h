#pragma once

#include "DesktopPicture.h"

#include <QList>
#include <QPoint>
#include <QSize>
#include <optional>

// Which of the program's screens a desktop's monitor stream shows. Desktops describe the stream by
// a position and a size, in logical pixels (GNOME, KDE) or in device pixels with the position
// always at 0,0 (wlroots' portal).
class StreamScreen {
public:
    // The screen (an index into screens) of that position and size: the one at the position among
    // those of the size, or the only one of the size; nothing when no screen or several fit.
    static std::optional<qsizetype> find(
        const QList<DesktopPicture::Monitor>& screens, std::optional<QPoint> position, QSize size);
};
