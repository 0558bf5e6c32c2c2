#pragma once

#include <QImage>
#include <QList>
#include <QRect>
#include <optional>

// A picture of the whole desktop as a desktop portal gives it, cut into its monitors. The picture
// covers the box around all monitors (their logical geometry) at one scale, usually the highest
// monitor scale. A monitor whose own scale is that scale is in it pixel for pixel; a monitor of a
// lower scale was enlarged by a whole factor and is brought back to its own pixels by averaging each
// block of pixels (exact where the desktop enlarged by repeating pixels).
class DesktopPicture {
public:
    struct Monitor {
        // Logical geometry, as QScreen::geometry() gives it.
        QRect geometry;
        // Device pixels per logical pixel, as QScreen::devicePixelRatio() gives it.
        qreal scale = 1;
    };

    DesktopPicture(QImage picture, QList<Monitor> monitors);

    // The picture fits the monitors: its size is the box around them at one scale.
    bool isValid() const { return m_scale.has_value(); }
    // Picture pixels per logical pixel.
    qreal scale() const { return m_scale.value_or(0); }
    const QImage& picture() const { return m_picture; }
    qsizetype monitorCount() const { return m_monitors.size(); }

    // The part of the picture that shows the monitor, in picture pixels.
    QRect source(qsizetype monitor) const;
    // The monitor's size in its own device pixels.
    QSize devicePixels(qsizetype monitor) const;
    // The monitor in its own device pixels; null when the picture is not valid.
    QImage monitor(qsizetype monitor) const;
    // Its pixels come out exactly as the desktop showed them.
    bool isExact(qsizetype monitor) const;

    // An image made smaller by a whole factor, each block of factor x factor pixels averaged.
    static QImage shrink(const QImage& image, int factor);

private:
    QImage m_picture;
    QList<Monitor> m_monitors;
    QRect m_box;
    std::optional<qreal> m_scale;
};
