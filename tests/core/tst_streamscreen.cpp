#include "StreamScreen.h"

#include <QTest>

// Which screen a desktop's monitor stream shows, from what the desktop says of the stream.
class TestStreamScreen : public QObject {
    Q_OBJECT

    // Two monitors side by side, the second at scale 2 (640 × 512 points, 1280 × 1024 pixels).
    const QList<DesktopPicture::Monitor> mixed { { QRect(0, 0, 1920, 1080), 1 },
        { QRect(1920, 0, 640, 512), 2 } };
    // Two monitors of one size.
    const QList<DesktopPicture::Monitor> twins { { QRect(0, 0, 1920, 1080), 1 },
        { QRect(1920, 0, 1920, 1080), 1 } };

private Q_SLOTS:
    void theSizeInPointsOrInPixelsFindsTheScreen()
    {
        QCOMPARE(StreamScreen::find(mixed, QPoint(1920, 0), QSize(640, 512)), 1);
        QCOMPARE(StreamScreen::find(mixed, QPoint(0, 0), QSize(1280, 1024)), 1);
        QCOMPARE(StreamScreen::find(mixed, std::nullopt, QSize(1920, 1080)), 0);
    }

    void screensOfOneSizeAreToldApartByThePosition()
    {
        QCOMPARE(StreamScreen::find(twins, QPoint(1920, 0), QSize(1920, 1080)), 1);
        QCOMPARE(StreamScreen::find(twins, QPoint(0, 0), QSize(1920, 1080)), 0);
        // Without a position that names one of them, none is sure.
        QCOMPARE(StreamScreen::find(twins, std::nullopt, QSize(1920, 1080)), std::nullopt);
        QCOMPARE(StreamScreen::find(twins, QPoint(5, 5), QSize(1920, 1080)), std::nullopt);
    }

    void aSizeNoScreenHasIsNone()
    {
        QCOMPARE(StreamScreen::find(mixed, QPoint(0, 0), QSize(800, 600)), std::nullopt);
        QCOMPARE(StreamScreen::find({}, QPoint(0, 0), QSize(1920, 1080)), std::nullopt);
    }
};

QTEST_APPLESS_MAIN(TestStreamScreen)
#include "tst_streamscreen.moc"
