#pragma once

#include "DesktopProbe.h"

#include <QImage>
#include <QString>

// Pictures the recording tests show, and the ways they compare what is on screen or in a file.
class VideoPictures {
public:
    // A picture whose every area looks different: colour gradients that restart every 256 pixels.
    static QImage pattern(const QSize& size);
    // The mean difference of the colour channels of two pictures of the same size (255 otherwise).
    static double meanDifference(const QImage& a, const QImage& b);
    // Empty when the tray icon on screen is the given icon, pixel for pixel where the icon is
    // opaque; otherwise what differs.
    static QString trayIconDifference(DesktopProbe& probe, xcb_window_t trayIcon, const QString& resource);
};
