#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSizeF>
#include <optional>

// The arithmetic of the region overlay: a drag becomes a rectangle of one monitor, in that
// monitor's own top-left coordinates.
class RegionSelection {
public:
    // A region must be at least this many points wide and high.
    static constexpr double minimumSide = 16.0;

    // The rectangle spanned from start to point, the point held inside the monitor's bounds (the
    // start is where the press was, always inside).
    static QRectF drag(const QPointF& start, const QPointF& point, const QSizeF& bounds);

    // What a finished drag delivers: the rectangle rounded outward to whole points and limited to
    // the bounds; none when it is narrower or lower than minimumSide.
    static std::optional<QRect> accepted(const QRectF& rectangle, const QSizeF& bounds);
};
