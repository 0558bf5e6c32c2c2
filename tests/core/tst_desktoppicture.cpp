#include "DesktopPicture.h"

#include <QTest>

// A portal's picture of the whole desktop cut into its monitors: 1920 x 1080 at 0,0 and a second
// monitor at 1920,0 that is 1280 x 1024 device pixels, at scale 1 or 2.
class TestDesktopPicture : public QObject {
    Q_OBJECT

    // Every pixel says where it is.
    static QImage pattern(const QSize& size, int seed = 0)
    {
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < size.width(); ++x)
                line[x] = qRgb((x * 7 + seed) & 0xff, (y * 13) & 0xff, (x ^ y) & 0xff);
        }
        return image;
    }

    // Each pixel repeated factor x factor times, as a desktop enlarges a monitor of a lower scale.
    static QImage repeated(const QImage& image, int factor)
    {
        return image.scaled(image.size() * factor, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    }

private Q_SLOTS:
    void monitorsOfTheSameScaleComeOutPixelForPixel()
    {
        const QImage first = pattern({ 1920, 1080 }, 1);
        const QImage second = pattern({ 1280, 1024 }, 2);
        QImage whole(3200, 1080, QImage::Format_RGB32);
        whole.fill(Qt::black);
        for (int y = 0; y < 1080; ++y)
            for (int x = 0; x < 3200; ++x)
                whole.setPixel(x, y, x < 1920 ? first.pixel(x, y) : y < 1024 ? second.pixel(x - 1920, y) : 0);
        const DesktopPicture desktop(
            whole, { { QRect(0, 0, 1920, 1080), 1 }, { QRect(1920, 0, 1280, 1024), 1 } });
        QVERIFY(desktop.isValid());
        QCOMPARE(desktop.scale(), 1.0);
        QCOMPARE(desktop.source(1), QRect(1920, 0, 1280, 1024));
        QVERIFY(desktop.isExact(0) && desktop.isExact(1));
        QCOMPARE(desktop.monitor(0), first);
        QCOMPARE(desktop.monitor(1), second);
    }

    void aMonitorOfScale2IsTakenAtItsOwnPixelsAndTheOtherIsBroughtBackToIts()
    {
        // Logical layout: 1920 x 1080 and 640 x 512 (1280 x 1024 at scale 2); the picture at scale 2.
        const QImage first = pattern({ 1920, 1080 }, 3);
        const QImage second = pattern({ 1280, 1024 }, 4);
        QImage whole(2 * 2560, 2 * 1080, QImage::Format_RGB32);
        whole.fill(Qt::black);
        {
            const QImage big = repeated(first, 2);
            for (int y = 0; y < big.height(); ++y)
                for (int x = 0; x < big.width(); ++x)
                    whole.setPixel(x, y, big.pixel(x, y));
            for (int y = 0; y < 1024; ++y)
                for (int x = 0; x < 1280; ++x)
                    whole.setPixel(3840 + x, y, second.pixel(x, y));
        }
        const DesktopPicture desktop(
            whole, { { QRect(0, 0, 1920, 1080), 1 }, { QRect(1920, 0, 640, 512), 2 } });
        QVERIFY(desktop.isValid());
        QCOMPARE(desktop.scale(), 2.0);
        QCOMPARE(desktop.source(0), QRect(0, 0, 3840, 2160));
        QCOMPARE(desktop.source(1), QRect(3840, 0, 1280, 1024));
        QCOMPARE(desktop.devicePixels(0), QSize(1920, 1080));
        QCOMPARE(desktop.devicePixels(1), QSize(1280, 1024));
        QVERIFY(desktop.isExact(1));
        QVERIFY(!desktop.isExact(0)); // enlarged by the desktop: exact only if it repeated pixels
        QCOMPARE(desktop.monitor(1), second);
        QCOMPARE(desktop.monitor(0), first); // it did here
    }

    void aMonitorLeftOrAboveTheFirstMovesThePicturesOrigin()
    {
        const QImage left = pattern({ 100, 80 }, 5);
        const QImage right = pattern({ 60, 40 }, 6);
        QImage whole(160, 80, QImage::Format_RGB32);
        whole.fill(Qt::black);
        for (int y = 0; y < 80; ++y)
            for (int x = 0; x < 100; ++x)
                whole.setPixel(x, y, left.pixel(x, y));
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 60; ++x)
                whole.setPixel(100 + x, 20 + y, right.pixel(x, y));
        // The primary monitor at 0,0 is the right one; the other lies left of it and higher.
        const DesktopPicture desktop(whole, { { QRect(0, 0, 60, 40), 1 }, { QRect(-100, -20, 100, 80), 1 } });
        QVERIFY(desktop.isValid());
        QCOMPARE(desktop.monitor(0), right);
        QCOMPARE(desktop.monitor(1), left);
    }

    void aPictureThatDoesNotFitTheMonitorsIsRefused()
    {
        const QList<DesktopPicture::Monitor> layout { { QRect(0, 0, 1920, 1080), 1 },
            { QRect(1920, 0, 1280, 1024), 1 } };
        QVERIFY(!DesktopPicture(pattern({ 1920, 1080 }), layout).isValid()); // one monitor only
        QVERIFY(!DesktopPicture(QImage(), layout).isValid());
        QVERIFY(!DesktopPicture(pattern({ 3200, 1080 }), {}).isValid());
        QVERIFY(DesktopPicture(pattern({ 3200, 1080 }), layout).monitor(0).size() == QSize(1920, 1080));
        QVERIFY(DesktopPicture(pattern({ 1600, 500 }), layout).monitor(0).isNull());
    }

    void shrinkingAveragesEachBlock()
    {
        QImage image(4, 2, QImage::Format_RGB32);
        const QRgb values[] = { qRgb(0, 0, 0), qRgb(10, 20, 30), qRgb(100, 100, 100), qRgb(100, 100, 100),
            qRgb(20, 40, 60), qRgb(30, 60, 90), qRgb(100, 100, 100), qRgb(101, 101, 101) };
        for (int i = 0; i < 8; ++i)
            image.setPixel(i % 4, i / 4, values[i]);
        const QImage small = DesktopPicture::shrink(image, 2);
        QCOMPARE(small.size(), QSize(2, 1));
        QCOMPARE(small.pixel(0, 0), qRgb(15, 30, 45));
        QCOMPARE(small.pixel(1, 0), qRgb(100, 100, 100));
    }
};

QTEST_GUILESS_MAIN(TestDesktopPicture)
#include "tst_desktoppicture.moc"
