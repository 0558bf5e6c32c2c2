#include "FramePicker.h"

#include <utility>

FramePicker::FramePicker(QList<QRect> frames, const QRect& desktop)
    : m_frames(std::move(frames))
    , m_desktop(desktop)
{
}

std::optional<QRect> FramePicker::at(const QPoint& point) const
{
    if (!m_desktop.contains(point))
        return std::nullopt;
    for (auto it = m_frames.crbegin(); it != m_frames.crend(); ++it) {
        if (it->contains(point))
            return *it & m_desktop;
    }
    return std::nullopt;
}
