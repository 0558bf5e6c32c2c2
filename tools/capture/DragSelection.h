#pragma once

#include <QList>
#include <QPoint>
#include <QRect>

// The pixels that a drag across the desktop selects.
//
// A pointer position is taken as the corner between pixels: position (x, y) is the top-left
// corner of pixel (x, y). A drag from a to b selects the pixels inside the rectangle whose
// opposite corners are a and b: columns min(a.x, b.x) up to max(a.x, b.x) - 1 and rows likewise,
// |b.x - a.x| x |b.y - a.y| pixels, whichever way the drag went. A drag whose width or height is
// zero selects nothing.
//
// The pointer cannot go past the last column of a monitor that no other monitor continues to the
// right (nor past the last row of one that no monitor continues below), so there the far corner
// counts as that pixel's far edge: the last column and row of every monitor can be selected too.
class DragSelection {
public:
    // monitors: root coordinates.
    explicit DragSelection(QList<QRect> monitors);

    QRect between(const QPoint& a, const QPoint& b) const;

private:
    bool onMonitor(const QPoint& position) const;

    QList<QRect> m_monitors;
};
