#pragma once

#include <QList>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <optional>

// The rectangle that a drag selects over a frozen picture of the desktop, in that picture's pixels.
// Every drag-a-rectangle overlay of the program uses it: the screenshot area, `vexet-capture -i -s`
// and the recording region.
//
// A position is the corner between pixels: (x, y) is the top-left corner of pixel (x, y), and
// positions may have fractions (a pointer on a scaled monitor). A drag from a to b covers the pixels
// of the rectangle whose opposite corners are a and b, rounded outward to whole pixels, whichever
// way the drag went.
//
// The corner that follows the pointer is held inside the bounds (the monitor of a recording region,
// the whole desktop for a screenshot); the start is where the button went down. The pointer cannot
// go past the last column of a monitor that no other monitor continues to the right (nor past the
// last row of one that no monitor continues below), so a position on that last pixel counts as its
// far edge: the last column and row of every monitor can be selected too.
class RegionSelection {
public:
    // monitors: where the pointer can be; bounds: where the selection is kept. Both in the
    // picture's pixels. minimumSide: the narrowest and lowest drag that counts, in pixels.
    RegionSelection(QList<QRect> monitors, const QRect& bounds, double minimumSide);

    // The button went down: a new drag starts there and the previous rectangle is dropped.
    void press(const QPointF& position);
    // The pointer moved while the button is held; nothing happens without a drag.
    void move(const QPointF& position);
    // The button came up: the pixels chosen, or none when no drag was under way or the rectangle is
    // narrower or lower than the minimum (the user may then drag again).
    std::optional<QRect> release(const QPointF& position);

    bool isDragging() const { return m_start.has_value(); }
    const std::optional<QPointF>& start() const { return m_start; }
    // The rectangle as dragged; empty before the first motion.
    const QRectF& rectangle() const { return m_rectangle; }
    // The pixels the rectangle covers now, kept inside the bounds.
    QRect pixels() const;

    // The rectangle spanned by a drag from start to position, as defined above.
    QRectF spanned(const QPointF& start, const QPointF& position) const;
    // The whole pixels a rectangle touches (edges rounded outward), kept inside bounds.
    static QRect covered(const QRectF& rectangle, const QRect& bounds);

private:
    QPointF atFarEdges(const QPointF& position, const QPointF& other) const;
    bool onMonitor(const QPointF& position) const;

    QList<QRect> m_monitors;
    QRect m_bounds;
    double m_minimumSide;
    std::optional<QPointF> m_start;
    QRectF m_rectangle;
};
