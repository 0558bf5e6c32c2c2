#pragma once

#include <QRect>
#include <QRectF>
#include <QString>
#include <QtGlobal>
#include <variant>

// A whole display: a RandR output, as it was when the user chose it.
struct VideoDisplay {
    quint32 outputId = 0; // RandR output id; the recorder re-finds the display by it
    QString name;
    QRect geometry; // in root-window pixels
    double pointPixelScale = 1.0; // pixels per point; 1 on X11 without scaling

    friend bool operator==(const VideoDisplay&, const VideoDisplay&) = default;
};

// A rectangle of one display, in the display's own points with the origin at its top-left corner.
struct VideoRegion {
    VideoDisplay display;
    QRectF rect;

    friend bool operator==(const VideoRegion&, const VideoRegion&) = default;
};

// One top-level window, identified by its X window id; the rest describes it for the user.
struct VideoWindow {
    quint32 windowId = 0;
    QString appName; // WM_CLASS class
    QString title;
    QRect geometry; // in root-window pixels when it was chosen
    quint32 pid = 0; // _NET_WM_PID, 0 when unknown

    friend bool operator==(const VideoWindow&, const VideoWindow&) = default;
};

// What is to be recorded. The recorder switches over it and re-finds it when it starts.
using VideoTarget = std::variant<VideoDisplay, VideoRegion, VideoWindow>;
