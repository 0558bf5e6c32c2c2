#include "VideoPictures.h"

#include <QIcon>

using namespace Qt::StringLiterals;

QImage VideoPictures::pattern(const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            line[x] = qRgb(x & 0xff, y & 0xff, (x / 256 + y / 256 * 5) * 20);
    }
    return image;
}

double VideoPictures::meanDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull())
        return 255;
    qint64 sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += qAbs(qRed(p) - qRed(q)) + qAbs(qGreen(p) - qGreen(q)) + qAbs(qBlue(p) - qBlue(q));
        }
    }
    return static_cast<double>(sum) / (3.0 * a.width() * a.height());
}

QString VideoPictures::trayIconDifference(DesktopProbe& probe, xcb_window_t trayIcon, const QString& resource)
{
    const QImage shown = probe.stableGrab(trayIcon);
    const QImage drawn
        = QIcon(resource).pixmap(shown.size()).toImage().convertToFormat(QImage::Format_ARGB32);
    if (shown.isNull() || drawn.isNull())
        return u"no picture of the tray icon"_s;
    const QPoint offset((shown.width() - drawn.width()) / 2, (shown.height() - drawn.height()) / 2);
    int opaque = 0;
    int different = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            const QRgb want = drawn.pixel(x, y);
            if (qAlpha(want) != 255)
                continue;
            ++opaque;
            const QRgb got = shown.pixel(x + offset.x(), y + offset.y());
            if (qAbs(qRed(got) - qRed(want)) > 2 || qAbs(qGreen(got) - qGreen(want)) > 2
                || qAbs(qBlue(got) - qBlue(want)) > 2)
                ++different;
        }
    }
    if (opaque < drawn.width() * drawn.height() / 5)
        return u"the icon has too few opaque pixels"_s;
    if (different > 0)
        return u"%1 of %2 opaque pixels differ from %3"_s.arg(different).arg(opaque).arg(resource);
    return {};
}
