#include "CropSelection.h"

#include "CropGeometry.h"

bool CropSelection::isUsable() const
{
    return CropGeometry::isUsable(m_rect);
}

bool CropSelection::press(const QPointF& point, const QRectF& imageRect)
{
    if (!CropGeometry::contains(imageRect, point))
        return false;
    m_start = point;
    m_rect = QRectF();
    return true;
}

bool CropSelection::drag(const QPointF& point, const QRectF& imageRect)
{
    if (!m_start)
        return false;
    m_rect = CropGeometry::span(*m_start, CropGeometry::clamp(point, imageRect));
    return true;
}

void CropSelection::release()
{
    m_start.reset();
}

void CropSelection::clear()
{
    m_rect = QRectF();
}
