#include "DesktopPicture.h"

#include <cmath>
#include <utility>

namespace {

// A scale counts as a whole factor of another when it is one up to rounding.
std::optional<int> wholeFactor(qreal big, qreal small)
{
    if (small <= 0)
        return std::nullopt;
    const qreal ratio = big / small;
    const long rounded = std::lround(ratio);
    if (rounded < 1 || std::abs(ratio - qreal(rounded)) > 1e-6)
        return std::nullopt;
    return int(rounded);
}

} // namespace

DesktopPicture::DesktopPicture(QImage picture, QList<Monitor> monitors)
    : m_picture(std::move(picture))
    , m_monitors(std::move(monitors))
{
    for (const Monitor& monitor : std::as_const(m_monitors))
        m_box |= monitor.geometry;
    if (m_picture.isNull() || m_box.isEmpty())
        return;
    const qreal scale = qreal(m_picture.width()) / m_box.width();
    // Both sides must agree on the scale, to the pixel.
    if (std::abs(m_box.height() * scale - m_picture.height()) >= 1)
        return;
    m_scale = scale;
}

QRect DesktopPicture::source(qsizetype monitor) const
{
    const QRect place = m_monitors.at(monitor).geometry.translated(-m_box.topLeft());
    const qreal scale = this->scale();
    const QPoint topLeft(int(std::lround(place.x() * scale)), int(std::lround(place.y() * scale)));
    const QPoint bottomRight(int(std::lround((place.x() + place.width()) * scale)),
        int(std::lround((place.y() + place.height()) * scale)));
    return QRect(topLeft, bottomRight - QPoint(1, 1)).intersected(m_picture.rect());
}

QSize DesktopPicture::devicePixels(qsizetype monitor) const
{
    const Monitor& place = m_monitors.at(monitor);
    return QSize(int(std::lround(place.geometry.width() * place.scale)),
        int(std::lround(place.geometry.height() * place.scale)));
}

bool DesktopPicture::isExact(qsizetype monitor) const
{
    return isValid() && source(monitor).size() == devicePixels(monitor);
}

QImage DesktopPicture::monitor(qsizetype monitor) const
{
    if (!isValid())
        return {};
    const QImage part = m_picture.copy(source(monitor)).convertToFormat(QImage::Format_RGB32);
    const QSize wanted = devicePixels(monitor);
    if (part.size() == wanted)
        return part;
    if (const std::optional<int> factor = wholeFactor(scale(), m_monitors.at(monitor).scale)) {
        const QImage shrunk = shrink(part, *factor);
        if (shrunk.size() == wanted)
            return shrunk;
    }
    return part.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage DesktopPicture::shrink(const QImage& image, int factor)
{
    if (factor <= 1)
        return image;
    const QImage source = image.convertToFormat(QImage::Format_RGB32);
    QImage result(source.width() / factor, source.height() / factor, QImage::Format_RGB32);
    const int count = factor * factor;
    for (int y = 0; y < result.height(); ++y) {
        auto* out = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < result.width(); ++x) {
            int red = 0;
            int green = 0;
            int blue = 0;
            for (int dy = 0; dy < factor; ++dy) {
                const auto* in = reinterpret_cast<const QRgb*>(source.constScanLine(y * factor + dy));
                for (int dx = 0; dx < factor; ++dx) {
                    const QRgb pixel = in[x * factor + dx];
                    red += qRed(pixel);
                    green += qGreen(pixel);
                    blue += qBlue(pixel);
                }
            }
            out[x] = qRgb((red + count / 2) / count, (green + count / 2) / count, (blue + count / 2) / count);
        }
    }
    return result;
}
