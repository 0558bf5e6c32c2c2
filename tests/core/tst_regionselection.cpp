#include "RegionSelection.h"

#include <QTest>

class TestRegionSelection : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aDragSpansBothCornersInAnyDirection()
    {
        const QSizeF bounds(1280, 1024);
        QCOMPARE(RegionSelection::drag({ 100, 50 }, { 300, 250 }, bounds), QRectF(100, 50, 200, 200));
        QCOMPARE(RegionSelection::drag({ 300, 250 }, { 100, 50 }, bounds), QRectF(100, 50, 200, 200));
        QCOMPARE(RegionSelection::drag({ 300, 50 }, { 100, 250 }, bounds), QRectF(100, 50, 200, 200));
    }

    void aDragLeavingTheMonitorStopsAtItsEdge()
    {
        const QSizeF bounds(1280, 1024);
        QCOMPARE(RegionSelection::drag({ 1200, 1000 }, { 1500, 1100 }, bounds), QRectF(1200, 1000, 80, 24));
        QCOMPARE(RegionSelection::drag({ 20, 30 }, { -400, -7 }, bounds), QRectF(0, 0, 20, 30));
        QCOMPARE(
            *RegionSelection::accepted(RegionSelection::drag({ 1200, 900 }, { 1500, 1100 }, bounds), bounds),
            QRect(1200, 900, 80, 124));
    }

    void smallRectanglesAreRefused()
    {
        const QSizeF bounds(1920, 1080);
        QCOMPARE(RegionSelection::accepted(QRectF(), bounds), std::nullopt);
        QCOMPARE(RegionSelection::accepted(QRectF(10, 10, 15, 200), bounds), std::nullopt);
        QCOMPARE(RegionSelection::accepted(QRectF(10, 10, 200, 15.99), bounds), std::nullopt);
        QCOMPARE(RegionSelection::accepted(QRectF(10, 10, 16, 16), bounds), QRect(10, 10, 16, 16));
    }

    void fractionsAreRoundedOutward()
    {
        QCOMPARE(RegionSelection::accepted(QRectF(10.4, 20.6, 100.2, 50.1), QSizeF(1920, 1080)),
            QRect(10, 20, 101, 51));
    }

    void theResultNeverLeavesTheBounds()
    {
        QCOMPARE(RegionSelection::accepted(QRectF(1900.5, 1060.5, 19.5, 19.5), QSizeF(1920, 1080)),
            QRect(1900, 1060, 20, 20));
        QCOMPARE(RegionSelection::accepted(QRectF(1900.5, 1060.5, 19.7, 19.7), QSizeF(1920, 1080)),
            QRect(1900, 1060, 20, 20));
    }
};

QTEST_GUILESS_MAIN(TestRegionSelection)
#include "tst_regionselection.moc"
