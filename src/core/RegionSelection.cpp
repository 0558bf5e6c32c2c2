#include "RegionSelection.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// A hair of floating-point noise must not add a whole row of pixels.
constexpr double noise = 1e-9;

} // namespace

RegionSelection::RegionSelection(QList<QRect> monitors, const QRect& bounds, double minimumSide)
    : m_monitors(std::move(monitors))
    , m_bounds(bounds)
    , m_minimumSide(minimumSide)
{
}

void RegionSelection::press(const QPointF& position)
{
    m_start = position;
}

void RegionSelection::move(const QPointF& position)
{
    if (m_start)
        m_rectangle = spanned(*m_start, position);
}

std::optional<QRect> RegionSelection::release(const QPointF& position)
{
    if (!m_start)
        return std::nullopt;
    m_rectangle = spanned(*std::exchange(m_start, std::nullopt), position);
    if (m_rectangle.width() < m_minimumSide || m_rectangle.height() < m_minimumSide)
        return std::nullopt;
    const QRect chosen = pixels();
    return chosen.isEmpty() ? std::nullopt : std::optional<QRect>(chosen);
}

QRect RegionSelection::pixels() const
{
    return m_rectangle.isEmpty() ? QRect() : covered(m_rectangle, m_bounds);
}

QRectF RegionSelection::spanned(const QPointF& start, const QPointF& position) const
{
    const QPointF held(
        std::clamp(position.x(), double(m_bounds.left()), double(m_bounds.left() + m_bounds.width())),
        std::clamp(position.y(), double(m_bounds.top()), double(m_bounds.top() + m_bounds.height())));
    const QPointF first = atFarEdges(start, held);
    const QPointF second = atFarEdges(held, start);
    return QRectF(QPointF(std::min(first.x(), second.x()), std::min(first.y(), second.y())),
        QPointF(std::max(first.x(), second.x()), std::max(first.y(), second.y())));
}

QPointF RegionSelection::atFarEdges(const QPointF& position, const QPointF& other) const
{
    QPointF result = position;
    if (!onMonitor(position))
        return result;
    // Only the corner that lies right of (below) the other one can stand for a far edge.
    if (position.x() > other.x() && !onMonitor(position + QPointF(1, 0)))
        result.setX(std::floor(position.x()) + 1);
    if (position.y() > other.y() && !onMonitor(position + QPointF(0, 1)))
        result.setY(std::floor(position.y()) + 1);
    return result;
}

bool RegionSelection::onMonitor(const QPointF& position) const
{
    return std::any_of(m_monitors.cbegin(), m_monitors.cend(), [&](const QRect& monitor) {
        return position.x() >= monitor.left() && position.x() < monitor.left() + monitor.width()
            && position.y() >= monitor.top() && position.y() < monitor.top() + monitor.height();
    });
}

QRect RegionSelection::covered(const QRectF& rectangle, const QRect& bounds)
{
    const int left = static_cast<int>(std::floor(rectangle.left() + noise));
    const int top = static_cast<int>(std::floor(rectangle.top() + noise));
    const int right = static_cast<int>(std::ceil(rectangle.right() - noise));
    const int bottom = static_cast<int>(std::ceil(rectangle.bottom() - noise));
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1)).intersected(bounds);
}
