#include "DevicePattern.h"

#include <QPainter>
#include <QScreen>

DevicePattern::DevicePattern(QScreen* screen, int seed)
    : m_seed(seed)
{
    setFlags(Qt::Window | Qt::FramelessWindowHint);
    setScreen(screen);
    setGeometry(screen->geometry());
}

QImage DevicePattern::make(const QSize& devicePixels, int seed)
{
    QImage image(devicePixels, QImage::Format_RGB32);
    for (int y = 0; y < devicePixels.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < devicePixels.width(); ++x)
            line[x] = qRgb((x * 7 + seed * 40) & 0xff, (y * 13 + seed * 90) & 0xff, (x ^ y) & 0xff);
    }
    return image;
}

QImage DevicePattern::expected() const
{
    return make(screen()->geometry().size() * screen()->devicePixelRatio(), m_seed);
}

void DevicePattern::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QImage picture = make(size() * devicePixelRatio(), m_seed);
    picture.setDevicePixelRatio(devicePixelRatio());
    painter.drawImage(QPointF(0, 0), picture);
}
