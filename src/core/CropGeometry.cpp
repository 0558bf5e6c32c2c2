#include "CropGeometry.h"

#include <algorithm>
#include <cmath>

QRectF CropGeometry::imageRect(const QSize& imagePixels, const QSizeF& bounds)
{
    if (imagePixels.isEmpty() || bounds.width() <= 0 || bounds.height() <= 0)
        return {};
    const double scale
        = std::min(bounds.width() / imagePixels.width(), bounds.height() / imagePixels.height());
    const double width = scale * imagePixels.width();
    const double height = scale * imagePixels.height();
    return { (bounds.width() - width) * 0.5, (bounds.height() - height) * 0.5, width, height };
}

bool CropGeometry::contains(const QRectF& rect, const QPointF& point)
{
    return point.x() >= rect.left() && point.x() < rect.right() && point.y() >= rect.top()
        && point.y() < rect.bottom();
}

QPointF CropGeometry::clamp(const QPointF& point, const QRectF& rect)
{
    return { std::clamp(point.x(), rect.left(), rect.right()),
        std::clamp(point.y(), rect.top(), rect.bottom()) };
}

QRectF CropGeometry::span(const QPointF& corner, const QPointF& oppositeCorner)
{
    return { std::min(corner.x(), oppositeCorner.x()), std::min(corner.y(), oppositeCorner.y()),
        std::abs(corner.x() - oppositeCorner.x()), std::abs(corner.y() - oppositeCorner.y()) };
}

bool CropGeometry::isUsable(const QRectF& selection)
{
    return selection.width() >= minimumSelection && selection.height() >= minimumSelection;
}

std::optional<QRect> CropGeometry::pixelRect(
    const QRectF& selection, const QRectF& imageRect, const QSize& imagePixels)
{
    if (imagePixels.isEmpty() || !isUsable(selection) || imageRect.width() <= 0)
        return std::nullopt;
    const double factor = imagePixels.width() / imageRect.width();
    const double left = factor * (selection.left() - imageRect.left());
    const double top = factor * (selection.top() - imageRect.top());
    const double right = left + factor * selection.width();
    const double bottom = top + factor * selection.height();

    // Outward to whole pixels, so that every pixel the selection touches is kept.
    const double x = std::floor(left);
    const double y = std::floor(top);
    const double limitX = std::min(std::ceil(right), double(imagePixels.width()));
    const double limitY = std::min(std::ceil(bottom), double(imagePixels.height()));
    const double clippedX = std::max(x, 0.0);
    const double clippedY = std::max(y, 0.0);
    if (limitX <= clippedX || limitY <= clippedY)
        return std::nullopt;
    return QRect(static_cast<int>(clippedX), static_cast<int>(clippedY), static_cast<int>(limitX - clippedX),
        static_cast<int>(limitY - clippedY));
}
