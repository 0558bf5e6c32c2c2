#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <optional>

// The arithmetic of the crop canvas: where the image is drawn, how a drag becomes a selection and
// how a selection in view coordinates becomes a rectangle of the image's own pixels.
class CropGeometry {
public:
    // A selection narrower or lower than this many points cannot be cropped.
    static constexpr double minimumSelection = 2.0;

    // The rectangle the image is drawn in: scaled by one factor to fit bounds (small images are
    // enlarged too) and centred. The zero rectangle when there is no image or the bounds are empty.
    static QRectF imageRect(const QSize& imagePixels, const QSizeF& bounds);

    // Whether point lies in rect; the right and bottom edges belong to the next rectangle.
    static bool contains(const QRectF& rect, const QPointF& point);

    // point moved into rect, edges included.
    static QPointF clamp(const QPointF& point, const QRectF& rect);

    // The rectangle spanned by two corners, in any order.
    static QRectF span(const QPointF& corner, const QPointF& oppositeCorner);

    // Whether a selection is at least minimumSelection wide and high.
    static bool isUsable(const QRectF& selection);

    // The image pixels under selection: one factor for both axes (the fit keeps the aspect ratio),
    // rounded outward to whole pixels, then limited to the image. None when the selection is not
    // usable, nothing is drawn, or no pixel of the image is left.
    static std::optional<QRect> pixelRect(
        const QRectF& selection, const QRectF& imageRect, const QSize& imagePixels);
};
