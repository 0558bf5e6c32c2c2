#pragma once

#include <QImage>
#include <QRect>
#include <QRgb>

// A picture whose every pixel names its own root position, so that any pixel out of place in a
// capture shows: red = x mod 256, green = y mod 256, blue = the high bits of x and y.
// Unique for every position of a desktop up to 4096 x 4096.
class DesktopPattern {
public:
    static QRgb at(int x, int y);
    // The pattern for a rectangle of the root window.
    static QImage of(const QRect& rootRect);
};
