#include "DesktopPattern.h"

QRgb DesktopPattern::at(int x, int y)
{
    return qRgb(x & 0xff, y & 0xff, ((x >> 8) & 0x0f) << 4 | ((y >> 8) & 0x0f));
}

QImage DesktopPattern::of(const QRect& rootRect)
{
    QImage image(rootRect.size(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = at(rootRect.x() + x, rootRect.y() + y);
    }
    return image;
}
