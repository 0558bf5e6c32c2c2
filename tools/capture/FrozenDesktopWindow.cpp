#include "FrozenDesktopWindow.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QtMath>

using namespace Qt::StringLiterals;

namespace {

constexpr QColor dimming(0, 0, 0, 120);
constexpr QColor outline(255, 255, 255);
constexpr QColor labelBackground(0, 0, 0, 190);
constexpr int labelPadding = 4;
constexpr int labelGap = 6;

QPoint rootPosition(const QMouseEvent* event)
{
    const QPointF position = event->globalPosition();
    return QPoint(qFloor(position.x()), qFloor(position.y()));
}

} // namespace

FrozenDesktopWindow::FrozenDesktopWindow(const QImage& frozen, const QRect& desktop)
    : m_frozen(frozen)
    , m_desktop(desktop)
{
    setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint);
    setGeometry(desktop);
    m_dimmed = m_frozen.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&m_dimmed);
    painter.fillRect(m_dimmed.rect(), dimming);
}

void FrozenDesktopWindow::setLit(const QRect& rect)
{
    if (rect == m_lit)
        return;
    const QRect before = dirtyRect(m_lit);
    m_lit = rect;
    update(QRegion(before) | dirtyRect(m_lit));
}

QRect FrozenDesktopWindow::dirtyRect(const QRect& lit) const
{
    if (lit.isEmpty())
        return {};
    return lit.translated(-m_desktop.topLeft()).adjusted(-2, -2, 2, 2)
        | labelRect(lit).adjusted(-1, -1, 1, 1);
}

QString FrozenDesktopWindow::labelText(const QRect& lit) const
{
    return u"%1 × %2"_s.arg(lit.width()).arg(lit.height());
}

QRect FrozenDesktopWindow::labelRect(const QRect& lit) const
{
    const QFontMetrics metrics(QGuiApplication::font());
    QRect label(QPoint(0, 0),
        metrics.size(Qt::TextSingleLine, labelText(lit)) + QSize(2 * labelPadding, 2 * labelPadding));
    // Below the lit part, else above it, else inside its top-left corner.
    label.moveTopLeft(lit.bottomLeft() + QPoint(0, labelGap + 1));
    if (!m_desktop.contains(label))
        label.moveBottomLeft(lit.topLeft() - QPoint(0, labelGap + 1));
    if (!m_desktop.contains(label))
        label.moveTopLeft(lit.topLeft() + QPoint(labelGap, labelGap));
    if (label.right() > m_desktop.right())
        label.moveRight(m_desktop.right());
    return label.translated(-m_desktop.topLeft());
}

void FrozenDesktopWindow::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.setClipRegion(event->region());
    for (const QRect& rect : event->region())
        painter.drawImage(rect, m_dimmed, rect);
    if (m_lit.isEmpty())
        return;
    const QRect lit = m_lit.translated(-m_desktop.topLeft());
    painter.drawImage(lit, m_frozen, lit);
    painter.setPen(QPen(outline, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(lit.adjusted(-1, -1, 0, 0));
    const QRect label = labelRect(m_lit);
    painter.fillRect(label, labelBackground);
    painter.setPen(outline);
    painter.drawText(label, Qt::AlignCenter, labelText(m_lit));
}

void FrozenDesktopWindow::exposeEvent(QExposeEvent* event)
{
    QRasterWindow::exposeEvent(event);
    if (isExposed())
        Q_EMIT exposed();
}

void FrozenDesktopWindow::mouseMoveEvent(QMouseEvent* event)
{
    Q_EMIT pointerMoved(rootPosition(event));
}

void FrozenDesktopWindow::mousePressEvent(QMouseEvent* event)
{
    Q_EMIT buttonPressed(event->button(), rootPosition(event));
}

void FrozenDesktopWindow::mouseReleaseEvent(QMouseEvent* event)
{
    Q_EMIT buttonReleased(event->button(), rootPosition(event));
}

void FrozenDesktopWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        Q_EMIT escapePressed();
}
