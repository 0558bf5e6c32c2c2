#include "PatternWindow.h"

#include "DesktopPattern.h"

#include <QPaintEvent>
#include <QPainter>

PatternWindow::PatternWindow(const QImage& contents)
    : m_contents(contents)
{
}

PatternWindow* PatternWindow::cover(const QRect& rootRect)
{
    auto* window = new PatternWindow(DesktopPattern::of(rootRect));
    window->setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    window->setGeometry(rootRect);
    return window;
}

PatternWindow* PatternWindow::managed(const QRect& rootRect, QRgb colour, const QString& title)
{
    QImage contents(rootRect.size(), QImage::Format_RGB32);
    contents.fill(colour);
    auto* window = new PatternWindow(contents);
    window->setTitle(title);
    window->setGeometry(rootRect);
    return window;
}

void PatternWindow::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    for (const QRect& rect : event->region())
        painter.drawImage(rect, m_contents, rect);
}
