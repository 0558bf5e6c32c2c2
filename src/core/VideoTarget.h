#pragma once

#include <QRect>
#include <QRectF>
#include <QString>
#include <QtGlobal>
#include <variant>

// What is to be recorded, as the user chose it. The recorder treats it as opaque: the desktop finds
// the source again by its id when the recording starts. On X11 the id is a RandR output or an X
// window; where the desktop chooses itself (a portal's chooser), it is the stream the desktop opened.

// A whole display, as it was when the user chose it.
struct VideoDisplay {
    quint32 sourceId = 0;
    QString name;
    QRect geometry; // in the desktop's pixels: root-window pixels on X11, the stream's on Wayland
    double pointPixelScale = 1.0; // pixels per point; 1 without scaling

    friend bool operator==(const VideoDisplay&, const VideoDisplay&) = default;
};

// A rectangle of one display, in the display's own points with the origin at its top-left corner.
struct VideoRegion {
    VideoDisplay display;
    QRectF rect;

    friend bool operator==(const VideoRegion&, const VideoRegion&) = default;
};

// One top-level window; the rest describes it for the user.
struct VideoWindow {
    quint32 sourceId = 0;
    QString appName; // WM_CLASS class
    QString title;
    QRect geometry; // in the desktop's pixels when it was chosen
    quint32 pid = 0; // _NET_WM_PID, 0 when unknown

    friend bool operator==(const VideoWindow&, const VideoWindow&) = default;
};

using VideoTarget = std::variant<VideoDisplay, VideoRegion, VideoWindow>;

// The id the desktop knows the target's source by.
inline quint32 sourceIdOf(const VideoTarget& target)
{
    if (const auto* display = std::get_if<VideoDisplay>(&target))
        return display->sourceId;
    if (const auto* region = std::get_if<VideoRegion>(&target))
        return region->display.sourceId;
    return std::get<VideoWindow>(target).sourceId;
}
