#pragma once

#include <QImage>
#include <QRasterWindow>

class QScreen;

// A known picture over a whole monitor, given pixel for pixel in the monitor's own device pixels
// (on a monitor of scale 2 every device pixel differs from its neighbours, so a picture cut half a
// point wrong does not match).
class DevicePattern : public QRasterWindow {
    Q_OBJECT

public:
    DevicePattern(QScreen* screen, int seed);

    // The monitor's pixels as this window paints them.
    QImage expected() const;
    static QImage make(const QSize& devicePixels, int seed);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_seed;
};
