#include "MovingPicture.h"

#include <QPainter>

MovingPicture::MovingPicture(const QRect& geometry, QColor background, bool managed)
    : QWidget(
        nullptr, managed ? Qt::Window : Qt::Window | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint)
    , m_background(background)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setGeometry(geometry);
    m_timer.setInterval(16);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        ++m_step;
        update();
    });
    m_timer.start();
}

void MovingPicture::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_background);
    // A thin bar in a darker shade: it moves, and the picture keeps its background colour on average.
    const int barWidth = std::max(4, width() / 40);
    const int x = (m_step * 7) % std::max(1, width() - barWidth);
    painter.fillRect(QRect(x, 0, barWidth, height()), m_background.darker(150));
}
