#include "CropCanvas.h"

#include "AccessibleRoles.h"
#include "CropGeometry.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

using namespace Qt::StringLiterals;

CropCanvas::CropCanvas(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    AccessibleRoles::assign(staticMetaObject, QAccessible::Canvas);
    setAccessibleName(u"Kırpılacak resim"_s);
    describe();
}

void CropCanvas::setImage(const QImage& image)
{
    m_image = image;
    update();
    describe();
}

void CropCanvas::clearSelection()
{
    m_selection.clear();
    update();
    describe();
}

QRectF CropCanvas::imageRect() const
{
    return CropGeometry::imageRect(m_image.size(), QSizeF(size()));
}

QImage CropCanvas::croppedImage() const
{
    if (m_image.isNull())
        return {};
    const std::optional<QRect> pixels
        = CropGeometry::pixelRect(m_selection.rect(), imageRect(), m_image.size());
    if (!pixels)
        return {};
    return m_image.copy(*pixels);
}

void CropCanvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    const QRectF drawn = imageRect();
    if (!m_image.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(drawn, m_image);
    }

    const QRectF selection = m_selection.rect();
    if (selection.isEmpty())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    // Even-odd: the selection cuts a hole into the image area, so only the image outside it dims.
    QPainterPath dimmed;
    dimmed.setFillRule(Qt::OddEvenFill);
    dimmed.addRect(drawn);
    dimmed.addRect(selection);
    painter.fillPath(dimmed, QColor::fromRgbF(0, 0, 0, 0.4f));

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 2.0));
    painter.drawRect(selection);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1.0));
    painter.drawRect(selection);
}

void CropCanvas::mousePressEvent(QMouseEvent* event)
{
    setFocus(Qt::MouseFocusReason);
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (!m_selection.press(event->position(), imageRect()))
        return;
    update();
    reportSelection(false);
}

void CropCanvas::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton) || !m_selection.drag(event->position(), imageRect())) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    update();
    reportSelection(m_selection.isUsable());
}

void CropCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_selection.release();
    QWidget::mouseReleaseEvent(event);
}

void CropCanvas::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        clearSelection();
        reportSelection(false);
        return;
    }
    if (event->matches(QKeySequence::Copy)) {
        if (onCopy)
            onCopy();
        return;
    }
    QWidget::keyPressEvent(event);
}

void CropCanvas::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    // View coordinates no longer match the image: a selection would now cover other pixels.
    clearSelection();
    reportSelection(false);
}

void CropCanvas::reportSelection(bool usable)
{
    describe();
    if (onSelection)
        onSelection(usable);
}

void CropCanvas::describe()
{
    if (m_image.isNull()) {
        setAccessibleDescription(u"Resim yok."_s);
        return;
    }
    const QString image = u"Resim %1 × %2 piksel; "_s.arg(m_image.width()).arg(m_image.height());
    const std::optional<QRect> pixels
        = CropGeometry::pixelRect(m_selection.rect(), imageRect(), m_image.size());
    if (pixels) {
        setAccessibleDescription(image
            + u"seçili alan %1 × %2 piksel, sol üst köşesi %3, %4."_s.arg(pixels->width())
                  .arg(pixels->height())
                  .arg(pixels->x())
                  .arg(pixels->y()));
    } else if (!m_selection.rect().isEmpty()) {
        setAccessibleDescription(image + u"seçim kırpmak için çok küçük."_s);
    } else {
        setAccessibleDescription(image + u"seçim yok."_s);
    }
}
