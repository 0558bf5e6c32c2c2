#include "RegionClip.h"

#include <algorithm>
#include <cmath>

std::optional<QRectF> RegionClip::clip(const QRectF& region, const QSizeF& displaySize)
{
    const QRectF clipped = region.normalized().intersected(QRectF(QPointF(0, 0), displaySize));
    if (!(clipped.width() >= minimumSide) || !(clipped.height() >= minimumSide))
        return std::nullopt;
    return clipped;
}

QRect RegionClip::pixels(const QRectF& clipped, double pointPixelScale, const QSize& displayPixels)
{
    const auto edge = [](double value, double scale, int limit, bool up) {
        const double scaled = value * scale;
        // A hair of floating-point noise must not add a whole pixel row.
        const double rounded = up ? std::ceil(scaled - 1e-6) : std::floor(scaled + 1e-6);
        return std::clamp(static_cast<int>(rounded), 0, limit);
    };
    const int left = edge(clipped.left(), pointPixelScale, displayPixels.width(), false);
    const int top = edge(clipped.top(), pointPixelScale, displayPixels.height(), false);
    const int right = edge(clipped.right(), pointPixelScale, displayPixels.width(), true);
    const int bottom = edge(clipped.bottom(), pointPixelScale, displayPixels.height(), true);
    return QRect(QPoint(left, top), QSize(right - left, bottom - top));
}
