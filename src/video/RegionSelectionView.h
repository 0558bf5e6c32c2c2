#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QWidget>
#include <functional>
#include <optional>

// The single view of the region overlay: the monitor dimmed, a rectangle dragged out of it, and
// the rectangle (or nothing, on Escape) handed back once.
class RegionSelectionView : public QWidget {
    Q_OBJECT
public:
    // background: the monitor as it looked when the selection began.
    explicit RegionSelectionView(QImage background, QWidget* parent = nullptr);

    // Called once with the chosen rectangle in the monitor's own top-left coordinates, or with
    // nothing on cancel; cleared before it is called.
    std::function<void(std::optional<QRect>)> completion;

    const QRectF& rectangle() const { return m_rectangle; }

    static QString hint();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void deliver(std::optional<QRect> rectangle);

    QImage m_background;
    std::optional<QPointF> m_start;
    QRectF m_rectangle;
};
