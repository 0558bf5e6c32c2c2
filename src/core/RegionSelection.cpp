#include "RegionSelection.h"

#include <algorithm>
#include <cmath>

QRectF RegionSelection::drag(const QPointF& start, const QPointF& point, const QSizeF& bounds)
{
    const QPointF held(
        std::clamp(point.x(), 0.0, bounds.width()), std::clamp(point.y(), 0.0, bounds.height()));
    return QRectF(QPointF(std::min(start.x(), held.x()), std::min(start.y(), held.y())),
        QPointF(std::max(start.x(), held.x()), std::max(start.y(), held.y())));
}

std::optional<QRect> RegionSelection::accepted(const QRectF& rectangle, const QSizeF& bounds)
{
    if (rectangle.width() < minimumSide || rectangle.height() < minimumSide)
        return std::nullopt;
    const int left = static_cast<int>(std::floor(rectangle.left()));
    const int top = static_cast<int>(std::floor(rectangle.top()));
    const int right = static_cast<int>(std::ceil(rectangle.right()));
    const int bottom = static_cast<int>(std::ceil(rectangle.bottom()));
    const QRect whole(QPoint(left, top), QPoint(right - 1, bottom - 1));
    return whole.intersected(QRect(QPoint(0, 0), bounds.toSize()));
}
