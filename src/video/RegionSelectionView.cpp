#include "RegionSelectionView.h"

#include "Beeper.h"
#include "RegionSelection.h"
#include "WindowHelpers.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

using namespace Qt::StringLiterals;

RegionSelectionView::RegionSelectionView(QImage background, QWidget* parent)
    : QWidget(parent)
    , m_background(std::move(background))
{
    setCursor(Qt::CrossCursor);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(false);
}

QString RegionSelectionView::hint()
{
    return u"Kaydedilecek alanı sürükleyerek seç • Esc: iptal"_s;
}

void RegionSelectionView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.drawImage(rect(), m_background);

    QPainterPath dimmed;
    dimmed.setFillRule(Qt::OddEvenFill);
    dimmed.addRect(rect());
    if (!m_rectangle.isEmpty())
        dimmed.addRect(m_rectangle);
    painter.fillPath(dimmed, QColor(0, 0, 0, qRound(0.38 * 255)));

    painter.setPen(QPen(Qt::white, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(m_rectangle);

    painter.setFont(WindowHelpers::systemFont(20, true));
    painter.drawText(QRect(28, 28, width() - 56, height() - 56), Qt::AlignLeft | Qt::AlignTop, hint());
}

void RegionSelectionView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_start = event->position();
}

void RegionSelectionView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_start || !(event->buttons() & Qt::LeftButton))
        return;
    m_rectangle = RegionSelection::drag(*m_start, event->position(), QSizeF(size()));
    update();
}

void RegionSelectionView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_start)
        return;
    if (const std::optional<QRect> chosen = RegionSelection::accepted(m_rectangle, QSizeF(size())))
        deliver(chosen);
    else
        Beeper::beep(); // too small: the user may drag again
}

void RegionSelectionView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        deliver(std::nullopt);
    // Every other key is ignored.
}

void RegionSelectionView::deliver(std::optional<QRect> rectangle)
{
    if (auto done = std::exchange(completion, {}))
        done(rectangle);
}
