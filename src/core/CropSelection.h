#pragma once

#include <QPointF>
#include <QRectF>
#include <optional>

// The selection of the crop canvas in view coordinates and the drag that makes it. The zero
// rectangle means that there is no selection.
class CropSelection {
public:
    const QRectF& rect() const { return m_rect; }
    // The anchor of the drag in progress; none when no drag is in progress.
    const std::optional<QPointF>& start() const { return m_start; }
    bool isDragging() const { return m_start.has_value(); }
    bool isEmpty() const { return m_rect.isEmpty(); }
    // Large enough to crop.
    bool isUsable() const;

    // Mouse down at point. Inside the drawn image a drag starts and the selection is cleared; the
    // result tells whether that happened. Outside it nothing changes, not even the selection.
    bool press(const QPointF& point, const QRectF& imageRect);

    // The drag reached point: the selection spans the anchor and point kept inside the drawn image.
    // Returns false, changing nothing, when no drag is in progress.
    bool drag(const QPointF& point, const QRectF& imageRect);

    // Mouse up: the drag ends, the selection stays.
    void release();

    // Drops the selection; a drag in progress keeps its anchor.
    void clear();

private:
    std::optional<QPointF> m_start;
    QRectF m_rect;
};
