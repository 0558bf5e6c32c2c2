#pragma once

#include <QImage>
#include <QPoint>
#include <QRasterWindow>
#include <QRect>

// The frozen desktop shown dimmed over the whole root window, with one part lit (the selection
// or the window under the pointer) and its size beside it. An override-redirect window: the
// window manager neither moves, decorates nor stacks it. It draws and forwards the user's input;
// what the input means is decided elsewhere. Positions are root coordinates.
class FrozenDesktopWindow : public QRasterWindow {
    Q_OBJECT

public:
    FrozenDesktopWindow(const QImage& frozen, const QRect& desktop);

    // The part shown undimmed; an empty rectangle for none.
    void setLit(const QRect& rect);
    QRect lit() const { return m_lit; }

Q_SIGNALS:
    void exposed();
    void pointerMoved(const QPoint& position);
    void buttonPressed(Qt::MouseButton button, const QPoint& position);
    void buttonReleased(Qt::MouseButton button, const QPoint& position);
    void escapePressed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRect labelRect(const QRect& lit) const;
    QString labelText(const QRect& lit) const;
    QRect dirtyRect(const QRect& lit) const;

    QImage m_frozen;
    QImage m_dimmed;
    QRect m_desktop;
    QRect m_lit;
};
