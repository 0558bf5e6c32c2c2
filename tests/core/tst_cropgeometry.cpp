#include "CropGeometry.h"

#include <QTest>

class TestCropGeometry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void noImageOrNoRoomDrawsNothing();
    void wideImageFillsTheWidthAndIsCentredVertically();
    void tallImageFillsTheHeightAndIsCentredHorizontally();
    void smallImageIsEnlarged();
    void containsLeavesOutTheRightAndBottomEdges();
    void clampKeepsPointsInsideEdgesIncluded();
    void spanAcceptsCornersInAnyOrder();
    void usableFromTwoPointsEachWay_data();
    void usableFromTwoPointsEachWay();
    void halfPixelRoundsOutwardToTheLowerColumn();
    void pixelRectFollowsTheDrawnImagesOffset();
    void pixelRectRoundsBothEdgesOutward();
    void pixelRectStopsAtTheImage();
    void pixelRectOfTheWholeDrawnImageIsTheWholeImage();
    void noPixelRectWithoutUsableSelection();
    void noPixelRectWhenNothingIsDrawn();
    void noPixelRectOutsideTheImage();
};

void TestCropGeometry::noImageOrNoRoomDrawsNothing()
{
    QCOMPARE(CropGeometry::imageRect(QSize(), QSizeF(800, 600)), QRectF());
    QCOMPARE(CropGeometry::imageRect(QSize(0, 10), QSizeF(800, 600)), QRectF());
    QCOMPARE(CropGeometry::imageRect(QSize(100, 100), QSizeF(0, 600)), QRectF());
    QCOMPARE(CropGeometry::imageRect(QSize(100, 100), QSizeF(800, 0)), QRectF());
}

void TestCropGeometry::wideImageFillsTheWidthAndIsCentredVertically()
{
    // Scale min(800 / 1600, 600 / 400) = 0.5: drawn 800 × 200, 200 points above and below.
    QCOMPARE(CropGeometry::imageRect(QSize(1600, 400), QSizeF(800, 600)), QRectF(0, 200, 800, 200));
}

void TestCropGeometry::tallImageFillsTheHeightAndIsCentredHorizontally()
{
    // Scale min(800 / 300, 600 / 900) = 2/3: drawn 200 × 600, 300 points left and right.
    const QRectF rect = CropGeometry::imageRect(QSize(300, 900), QSizeF(800, 600));
    QCOMPARE(rect.x(), 300.0);
    QCOMPARE(rect.y(), 0.0);
    QCOMPARE(rect.width(), 200.0);
    QCOMPARE(rect.height(), 600.0);
}

void TestCropGeometry::smallImageIsEnlarged()
{
    // Scale min(1000 / 100, 700 / 50) = 10: drawn 1000 × 500.
    QCOMPARE(CropGeometry::imageRect(QSize(100, 50), QSizeF(1000, 700)), QRectF(0, 100, 1000, 500));
    // Fractional room: the rectangle keeps its fractions rather than snapping to whole points.
    QCOMPARE(CropGeometry::imageRect(QSize(4, 4), QSizeF(11, 5)), QRectF(3, 0, 5, 5));
}

void TestCropGeometry::containsLeavesOutTheRightAndBottomEdges()
{
    const QRectF rect(10, 20, 100, 50);
    QVERIFY(CropGeometry::contains(rect, QPointF(10, 20)));
    QVERIFY(CropGeometry::contains(rect, QPointF(109.9, 69.9)));
    QVERIFY(!CropGeometry::contains(rect, QPointF(110, 40)));
    QVERIFY(!CropGeometry::contains(rect, QPointF(50, 70)));
    QVERIFY(!CropGeometry::contains(rect, QPointF(9.9, 40)));
    QVERIFY(!CropGeometry::contains(rect, QPointF(50, 19.9)));
    QVERIFY(!CropGeometry::contains(QRectF(), QPointF(0, 0)));
}

void TestCropGeometry::clampKeepsPointsInsideEdgesIncluded()
{
    const QRectF rect(10, 20, 100, 50);
    QCOMPARE(CropGeometry::clamp(QPointF(50, 40), rect), QPointF(50, 40));
    QCOMPARE(CropGeometry::clamp(QPointF(500, 40), rect), QPointF(110, 40));
    QCOMPARE(CropGeometry::clamp(QPointF(-5, 400), rect), QPointF(10, 70));
    QCOMPARE(CropGeometry::clamp(QPointF(0, 0), rect), QPointF(10, 20));
}

void TestCropGeometry::spanAcceptsCornersInAnyOrder()
{
    const QRectF expected(10, 20, 30, 40);
    QCOMPARE(CropGeometry::span(QPointF(10, 20), QPointF(40, 60)), expected);
    QCOMPARE(CropGeometry::span(QPointF(40, 60), QPointF(10, 20)), expected);
    QCOMPARE(CropGeometry::span(QPointF(10, 60), QPointF(40, 20)), expected);
    QCOMPARE(CropGeometry::span(QPointF(40, 20), QPointF(10, 60)), expected);
}

void TestCropGeometry::usableFromTwoPointsEachWay_data()
{
    QTest::addColumn<QRectF>("selection");
    QTest::addColumn<bool>("usable");
    QTest::newRow("2 × 2") << QRectF(5, 5, 2, 2) << true;
    QTest::newRow("large") << QRectF(0, 0, 300, 200) << true;
    QTest::newRow("1 point wide") << QRectF(5, 5, 1, 100) << false;
    QTest::newRow("1 point high") << QRectF(5, 5, 100, 1) << false;
    QTest::newRow("just under 2 wide") << QRectF(5, 5, 1.999, 100) << false;
    QTest::newRow("nothing") << QRectF() << false;
}

void TestCropGeometry::usableFromTwoPointsEachWay()
{
    QFETCH(QRectF, selection);
    QFETCH(bool, usable);
    QCOMPARE(CropGeometry::isUsable(selection), usable);
}

void TestCropGeometry::halfPixelRoundsOutwardToTheLowerColumn()
{
    // 2000 pixels drawn 1000 points wide; 10.25 points in is pixel column 20.5, rounded out to 20.
    const QRectF drawn(0, 0, 1000, 500);
    const std::optional<QRect> pixels
        = CropGeometry::pixelRect(QRectF(10.25, 0, 100, 100), drawn, QSize(2000, 1000));
    QVERIFY(pixels);
    QCOMPARE(pixels->x(), 20);
    // The right edge, 110.25 points = pixel 220.5, rounds out to 221.
    QCOMPARE(pixels->x() + pixels->width(), 221);
    QCOMPARE(pixels->y(), 0);
    QCOMPARE(pixels->height(), 200);
}

void TestCropGeometry::pixelRectFollowsTheDrawnImagesOffset()
{
    // The same image centred in a taller view: drawn from y = 100.
    const QRectF drawn(0, 100, 1000, 500);
    const std::optional<QRect> pixels
        = CropGeometry::pixelRect(QRectF(10.25, 110, 20, 30), drawn, QSize(2000, 1000));
    QVERIFY(pixels);
    QCOMPARE(*pixels, QRect(20, 20, 41, 60));
}

void TestCropGeometry::pixelRectRoundsBothEdgesOutward()
{
    // A quarter-size drawing: factor 4. Selection 2.6…5.1 × 1.1…3.3 points = 10.4…20.4 × 4.4…13.2.
    const std::optional<QRect> pixels
        = CropGeometry::pixelRect(QRectF(2.6, 1.1, 2.5, 2.2), QRectF(0, 0, 100, 50), QSize(400, 200));
    QVERIFY(pixels);
    QCOMPARE(*pixels, QRect(10, 4, 11, 10));
}

void TestCropGeometry::pixelRectStopsAtTheImage()
{
    // Rounding outward past the last column is cut back to the image.
    const std::optional<QRect> pixels
        = CropGeometry::pixelRect(QRectF(90, 40, 10.2, 10.2), QRectF(0, 0, 100.1, 50.05), QSize(1001, 500));
    QVERIFY(pixels);
    QCOMPARE(pixels->right(), 1000);
    QCOMPARE(pixels->bottom(), 499);

    // A selection reaching past the image (not clamped by a drag) keeps only the image's pixels.
    const std::optional<QRect> beyond
        = CropGeometry::pixelRect(QRectF(-10, -10, 30, 30), QRectF(0, 0, 100, 50), QSize(200, 100));
    QVERIFY(beyond);
    QCOMPARE(*beyond, QRect(0, 0, 40, 40));
}

void TestCropGeometry::pixelRectOfTheWholeDrawnImageIsTheWholeImage()
{
    const QRectF drawn = CropGeometry::imageRect(QSize(1440, 900), QSizeF(964, 567));
    const std::optional<QRect> pixels = CropGeometry::pixelRect(drawn, drawn, QSize(1440, 900));
    QVERIFY(pixels);
    QCOMPARE(*pixels, QRect(0, 0, 1440, 900));
}

void TestCropGeometry::noPixelRectWithoutUsableSelection()
{
    const QRectF drawn(0, 0, 1000, 500);
    QVERIFY(!CropGeometry::pixelRect(QRectF(), drawn, QSize(2000, 1000)));
    QVERIFY(!CropGeometry::pixelRect(QRectF(10, 10, 1, 100), drawn, QSize(2000, 1000)));
    QVERIFY(!CropGeometry::pixelRect(QRectF(10, 10, 100, 1.5), drawn, QSize(2000, 1000)));
}

void TestCropGeometry::noPixelRectWhenNothingIsDrawn()
{
    QVERIFY(!CropGeometry::pixelRect(QRectF(10, 10, 50, 50), QRectF(), QSize(2000, 1000)));
    QVERIFY(!CropGeometry::pixelRect(QRectF(10, 10, 50, 50), QRectF(0, 0, 100, 100), QSize()));
}

void TestCropGeometry::noPixelRectOutsideTheImage()
{
    QVERIFY(!CropGeometry::pixelRect(QRectF(200, 10, 50, 50), QRectF(0, 0, 100, 100), QSize(100, 100)));
}

QTEST_APPLESS_MAIN(TestCropGeometry)
#include "tst_cropgeometry.moc"
