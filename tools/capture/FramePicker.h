#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <optional>

// Which window a click on the desktop picks: the topmost frame that contains the point.
class FramePicker {
public:
    // frames: the frames of the managed windows bottom to top, root coordinates; desktop: the
    // root window's rectangle.
    FramePicker(QList<QRect> frames, const QRect& desktop);

    // The picked frame clipped to the desktop; none over the bare desktop.
    std::optional<QRect> at(const QPoint& point) const;

private:
    QList<QRect> m_frames;
    QRect m_desktop;
};
