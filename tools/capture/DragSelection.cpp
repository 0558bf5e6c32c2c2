#include "DragSelection.h"

#include <algorithm>
#include <utility>

DragSelection::DragSelection(QList<QRect> monitors)
    : m_monitors(std::move(monitors))
{
}

QRect DragSelection::between(const QPoint& a, const QPoint& b) const
{
    if (a.x() == b.x() || a.y() == b.y())
        return {};
    const QPoint& rightmost = a.x() > b.x() ? a : b;
    const QPoint& lowest = a.y() > b.y() ? a : b;
    int right = rightmost.x();
    if (onMonitor(rightmost) && !onMonitor(rightmost + QPoint(1, 0)))
        ++right;
    int bottom = lowest.y();
    if (onMonitor(lowest) && !onMonitor(lowest + QPoint(0, 1)))
        ++bottom;
    const int left = std::min(a.x(), b.x());
    const int top = std::min(a.y(), b.y());
    return QRect(left, top, right - left, bottom - top);
}

bool DragSelection::onMonitor(const QPoint& position) const
{
    return std::any_of(m_monitors.cbegin(), m_monitors.cend(),
        [&](const QRect& monitor) { return monitor.contains(position); });
}
