#pragma once

#include <QImage>
#include <QRasterWindow>

// A window of the test program with known contents at a known place.
class PatternWindow : public QRasterWindow {
    Q_OBJECT

public:
    // Covers rootRect with the desktop pattern, out of the window manager's hands
    // (override-redirect), above the managed windows.
    static PatternWindow* cover(const QRect& rootRect);
    // A managed window (with the window manager's frame) filled with one colour.
    static PatternWindow* managed(const QRect& rootRect, QRgb colour, const QString& title);

    const QImage& contents() const { return m_contents; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    explicit PatternWindow(const QImage& contents);

    QImage m_contents;
};
