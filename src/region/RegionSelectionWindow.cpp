#include "RegionSelectionWindow.h"

#include "RegionSelectionAccessible.h"

#include <QAccessible>
#include <QEnterEvent>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

using namespace Qt::StringLiterals;

namespace {

constexpr QColor outlineColour(255, 255, 255);
constexpr QColor labelBackground(0, 0, 0, 190);
constexpr qreal labelPadding = 4;
constexpr qreal labelGap = 6;
constexpr int hintMargin = 28;
constexpr int hintPixelSize = 20;

QString sizeText(const QRect& lit)
{
    return u"%1 × %2"_s.arg(lit.width()).arg(lit.height());
}

QFont hintFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(hintPixelSize);
    font.setBold(true);
    return font;
}

} // namespace

RegionSelectionWindow::RegionSelectionWindow(const QImage& picture, const RegionSelectionLook& look)
    : m_picture(picture.convertToFormat(QImage::Format_RGB32))
    , m_dimmed(m_picture)
    , m_look(look)
{
    RegionSelectionAccessible::install();
    if (m_dimmed.isNull())
        return;
    QPainter painter(&m_dimmed);
    painter.fillRect(m_dimmed.rect(), QColor(0, 0, 0, m_look.dimming));
}

void RegionSelectionWindow::setLit(const QRect& pixels)
{
    if (pixels == m_lit)
        return;
    const QRect before = dirtyRect(m_lit);
    m_lit = pixels;
    update(QRegion(before) | dirtyRect(m_lit));
    // The description names the lit part.
    if (QAccessible::isActive()) {
        QAccessibleEvent changed(this, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&changed);
    }
}

QAccessibleInterface* RegionSelectionWindow::accessibleRoot() const
{
    return QAccessible::queryAccessibleInterface(const_cast<RegionSelectionWindow*>(this));
}

QPointF RegionSelectionWindow::toPixels(const QPointF& position) const
{
    return position * devicePixelRatio();
}

QRectF RegionSelectionWindow::toWindow(const QRect& pixels) const
{
    const qreal ratio = devicePixelRatio();
    return QRectF(QPointF(pixels.topLeft()) / ratio, QSizeF(pixels.size()) / ratio);
}

QRectF RegionSelectionWindow::labelRect(const QRectF& lit) const
{
    const QRectF window(QPointF(0, 0), QSizeF(size()));
    const QFontMetricsF metrics(QGuiApplication::font());
    QRectF label(QPointF(0, 0),
        metrics.size(Qt::TextSingleLine, sizeText(m_lit)) + QSizeF(2 * labelPadding, 2 * labelPadding));
    // Below the lit part, else above it, else inside its top-left corner.
    label.moveTopLeft(lit.bottomLeft() + QPointF(0, labelGap + 1));
    if (!window.contains(label))
        label.moveBottomLeft(lit.topLeft() - QPointF(0, labelGap + 1));
    if (!window.contains(label))
        label.moveTopLeft(lit.topLeft() + QPointF(labelGap, labelGap));
    if (label.right() > window.right())
        label.moveRight(window.right());
    return label;
}

QRect RegionSelectionWindow::dirtyRect(const QRect& lit) const
{
    if (lit.isEmpty())
        return {};
    const qreal margin = m_look.outlineWidth + 1;
    const QRectF shown = toWindow(lit);
    QRectF dirty = shown.adjusted(-margin, -margin, margin, margin);
    if (m_look.sizeLabel)
        dirty |= labelRect(shown).adjusted(-1, -1, 1, 1);
    return dirty.toAlignedRect();
}

void RegionSelectionWindow::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    const qreal ratio = devicePixelRatio();
    for (const QRect& rect : event->region()) {
        const QRectF target(rect);
        painter.drawImage(target, m_dimmed, QRectF(target.topLeft() * ratio, target.size() * ratio));
    }
    if (!m_look.hint.isEmpty()) {
        painter.setPen(outlineColour);
        painter.setFont(hintFont());
        painter.drawText(QRect(hintMargin, hintMargin, width() - 2 * hintMargin, height() - 2 * hintMargin),
            Qt::AlignLeft | Qt::AlignTop, m_look.hint);
    }
    if (m_lit.isEmpty())
        return;
    const QRectF lit = toWindow(m_lit);
    painter.drawImage(lit, m_picture, QRectF(m_lit));
    // The line as a filled frame: its pixels are exactly where they should be at any scale.
    const qreal width = m_look.outlineWidth;
    const qreal outward = m_look.outline == RegionSelectionLook::Outline::around ? width : width / 2;
    QPainterPath frame;
    frame.setFillRule(Qt::OddEvenFill);
    frame.addRect(lit.adjusted(-outward, -outward, outward, outward));
    frame.addRect(lit.adjusted(width - outward, width - outward, outward - width, outward - width));
    painter.fillPath(frame, outlineColour);
    if (m_look.sizeLabel) {
        const QRectF label = labelRect(lit);
        painter.fillRect(label, labelBackground);
        painter.setPen(outlineColour);
        painter.drawText(label, Qt::AlignCenter, sizeText(m_lit));
    }
}

void RegionSelectionWindow::exposeEvent(QExposeEvent* event)
{
    QRasterWindow::exposeEvent(event);
    if (isExposed())
        Q_EMIT exposed();
}

bool RegionSelectionWindow::event(QEvent* event)
{
    if (event->type() == QEvent::Enter)
        Q_EMIT entered(toPixels(static_cast<QEnterEvent*>(event)->position()));
    return QRasterWindow::event(event);
}

void RegionSelectionWindow::mouseMoveEvent(QMouseEvent* event)
{
    Q_EMIT pointerMoved(toPixels(event->position()));
}

void RegionSelectionWindow::mousePressEvent(QMouseEvent* event)
{
    Q_EMIT buttonPressed(event->button(), toPixels(event->position()));
}

void RegionSelectionWindow::mouseReleaseEvent(QMouseEvent* event)
{
    Q_EMIT buttonReleased(event->button(), toPixels(event->position()));
}

void RegionSelectionWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        Q_EMIT escapePressed();
}
