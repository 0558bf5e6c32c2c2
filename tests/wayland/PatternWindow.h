#pragma once

#include <QColor>
#include <QList>
#include <QPoint>
#include <QRasterWindow>

// A window that paints a known pattern and writes down the pointer and key events it gets.
class PatternWindow : public QRasterWindow {
    Q_OBJECT

public:
    struct Event {
        QEvent::Type type;
        QPoint position; // in the window, logical pixels
        Qt::MouseButtons buttons;
        int key;
    };

    explicit PatternWindow(QColor base);
    ~PatternWindow() override;

    // The colour of logical pixel (x, y): the base colour with stripes that change every 8 pixels,
    // so that a picture shifted, scaled or cut wrongly does not match.
    QRgb colorAt(int x, int y) const;
    QImage expected(QSize size) const;

    const QList<Event>& events() const { return m_events; }
    // The events in words, for failure messages.
    QString describeEvents() const;
    void clearEvents() { m_events.clear(); }
    int paintCount() const { return m_paints; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void record(QMouseEvent* event);

    QColor m_base;
    QList<Event> m_events;
    int m_paints = 0;
    bool m_leaving = false;
    bool m_lastFrameDone = false;
};
