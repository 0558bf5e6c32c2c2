#pragma once

#include "RegionSelectionLook.h"

#include <QImage>
#include <QPointF>
#include <QRasterWindow>
#include <QRect>

// One monitor of a frozen desktop picture (or, on X11, the whole desktop in one window) shown
// dimmed, with one part lit: the selection or the window under the pointer. It draws and forwards
// the user's input; what the input means is decided elsewhere.
//
// Positions and rectangles are in the picture's pixels, whose origin is the window's top-left
// corner: on a monitor of scale 2 every logical point of the window covers two pixels each way, so
// the picture is shown pixel for pixel.
class RegionSelectionWindow : public QRasterWindow {
    Q_OBJECT

public:
    RegionSelectionWindow(const QImage& picture, const RegionSelectionLook& look);

    const QImage& picture() const { return m_picture; }
    const RegionSelectionLook& look() const { return m_look; }
    // The part shown undimmed; an empty rectangle for none.
    void setLit(const QRect& pixels);
    QRect lit() const { return m_lit; }

    // The window's object for assistive technology (RegionSelectionAccessible).
    QAccessibleInterface* accessibleRoot() const override;

Q_SIGNALS:
    void exposed();
    // The pointer came over the window, also without moving (a window that appears under it).
    void entered(const QPointF& position);
    void pointerMoved(const QPointF& position);
    void buttonPressed(Qt::MouseButton button, const QPointF& position);
    void buttonReleased(Qt::MouseButton button, const QPointF& position);
    void escapePressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    bool event(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QPointF toPixels(const QPointF& position) const;
    QRectF toWindow(const QRect& pixels) const;
    QRectF labelRect(const QRectF& lit) const;
    QRect dirtyRect(const QRect& lit) const;

    QImage m_picture;
    QImage m_dimmed;
    RegionSelectionLook m_look;
    QRect m_lit;
};
