#pragma once

#include <QRect>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <optional>

// The rule for a recorded region: only its part inside the display counts, and that part must be at
// least 16 points wide and high.
class RegionClip {
public:
    static constexpr double minimumSide = 16.0;

    // The region intersected with the display (origin at its top-left, size in points); nothing when
    // the intersection is narrower or lower than 16 points (an empty one has width 0).
    static std::optional<QRectF> clip(const QRectF& region, const QSizeF& displaySize);

    // The display pixels that a clipped region covers: its edges times the scale, rounded outward and
    // kept inside a display of the given size in pixels.
    static QRect pixels(const QRectF& clipped, double pointPixelScale, const QSize& displayPixels);
};
