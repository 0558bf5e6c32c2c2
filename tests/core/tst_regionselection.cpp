#include "RegionSelection.h"

#include <QTest>

// The two monitors of the virtual desktops: 1920 x 1080 at 0,0 and 1280 x 1024 at 1920,0 (below
// the second one nobody can go).
namespace {
const QList<QRect> twoMonitors { QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024) };
const QRect desktop(0, 0, 3200, 1080);
} // namespace

class TestRegionSelection : public QObject {
    Q_OBJECT

    static std::optional<QRect> drag(RegionSelection& selection, const QPointF& from, const QPointF& to)
    {
        selection.press(from);
        selection.move((from + to) / 2);
        selection.move(to);
        return selection.release(to);
    }

private Q_SLOTS:
    // A screenshot: any size, across monitors, up to the pixels the pointer cannot go past.
    void aDragOverTheDesktopSelectsThePixelsBetweenItsCorners_data()
    {
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<QRect>("selected");

        QTest::newRow("down and right") << QPoint(100, 100) << QPoint(300, 200) << QRect(100, 100, 200, 100);
        QTest::newRow("up and left") << QPoint(300, 200) << QPoint(100, 100) << QRect(100, 100, 200, 100);
        QTest::newRow("up and right") << QPoint(100, 200) << QPoint(300, 100) << QRect(100, 100, 200, 100);
        QTest::newRow("down and left") << QPoint(300, 100) << QPoint(100, 200) << QRect(100, 100, 200, 100);
        QTest::newRow("one pixel") << QPoint(7, 9) << QPoint(8, 10) << QRect(7, 9, 1, 1);
        QTest::newRow("across the monitors")
            << QPoint(1800, 300) << QPoint(2100, 700) << QRect(1800, 300, 300, 400);
        QTest::newRow("from the first pixel") << QPoint(0, 0) << QPoint(10, 10) << QRect(0, 0, 10, 10);
        QTest::newRow("to the right edge")
            << QPoint(3000, 500) << QPoint(3199, 600) << QRect(3000, 500, 200, 100);
        QTest::newRow("to the bottom of the second monitor")
            << QPoint(2000, 900) << QPoint(2100, 1023) << QRect(2000, 900, 100, 124);
        QTest::newRow("to the bottom of the first monitor")
            << QPoint(1000, 900) << QPoint(1100, 1079) << QRect(1000, 900, 100, 180);
        QTest::newRow("the whole first monitor")
            << QPoint(0, 0) << QPoint(1919, 1079) << QRect(0, 0, 1920, 1080);
        QTest::newRow("the whole second monitor, backwards")
            << QPoint(3199, 1023) << QPoint(1920, 0) << QRect(1920, 0, 1280, 1024);
        // Where the next monitor goes on, the pointer can go further: no extension there.
        QTest::newRow("to the last column of the first monitor")
            << QPoint(1800, 100) << QPoint(1919, 200) << QRect(1800, 100, 119, 100);
        QTest::newRow("to row 1023 of the first monitor")
            << QPoint(100, 1000) << QPoint(200, 1023) << QRect(100, 1000, 100, 23);
    }

    void aDragOverTheDesktopSelectsThePixelsBetweenItsCorners()
    {
        QFETCH(QPoint, from);
        QFETCH(QPoint, to);
        RegionSelection selection(twoMonitors, desktop, 1);
        QTEST(drag(selection, from, to).value_or(QRect()), "selected");
        QVERIFY(!selection.isDragging());
    }

    void aDragWithoutWidthOrHeightSelectsNothing()
    {
        RegionSelection selection(twoMonitors, desktop, 1);
        QCOMPARE(drag(selection, { 5, 5 }, { 5, 5 }), std::nullopt);
        QCOMPARE(drag(selection, { 5, 5 }, { 5, 50 }), std::nullopt);
        QCOMPARE(drag(selection, { 5, 5 }, { 50, 5 }), std::nullopt);
        QCOMPARE(drag(selection, { 3199, 1023 }, { 3199, 1000 }), std::nullopt);
        QVERIFY(selection.pixels().isEmpty());
    }

    void fractionalPositionsCoverEveryPixelTheyTouch()
    {
        // A pointer on a monitor of scale 2 moves in half pixels of its own monitor picture.
        RegionSelection selection({ QRect(0, 0, 1280, 1024) }, QRect(0, 0, 1280, 1024), 1);
        QCOMPARE(drag(selection, { 10.5, 20.5 }, { 30.5, 40 }), QRect(10, 20, 21, 20));
        QCOMPARE(drag(selection, { 1270.5, 1000 }, { 1279.5, 1023.5 }), QRect(1270, 1000, 10, 24));
    }

    void withoutMonitorsPositionsAreCornersOnly()
    {
        RegionSelection selection({}, QRect(0, 0, 100, 100), 1);
        QCOMPARE(drag(selection, { 0, 0 }, { 4, 3 }), QRect(0, 0, 4, 3));
    }

    // A recording region: one monitor, at least 16 points, rounded outward, kept on the monitor.
    void aRegionDragSpansBothCornersInAnyDirection()
    {
        const QRect monitor(0, 0, 1280, 1024);
        RegionSelection selection({ monitor }, monitor, 16);
        QCOMPARE(selection.spanned({ 100, 50 }, { 300, 250 }), QRectF(100, 50, 200, 200));
        QCOMPARE(selection.spanned({ 300, 250 }, { 100, 50 }), QRectF(100, 50, 200, 200));
        QCOMPARE(selection.spanned({ 300, 50 }, { 100, 250 }), QRectF(100, 50, 200, 200));
    }

    void aRegionDragLeavingTheMonitorStopsAtItsEdge()
    {
        const QRect monitor(0, 0, 1280, 1024);
        RegionSelection selection({ monitor }, monitor, 16);
        QCOMPARE(selection.spanned({ 1200, 1000 }, { 1500, 1100 }), QRectF(1200, 1000, 80, 24));
        QCOMPARE(selection.spanned({ 20, 30 }, { -400, -7 }), QRectF(0, 0, 20, 30));
        QCOMPARE(drag(selection, { 1200, 900 }, { 1500, 1100 }), QRect(1200, 900, 80, 124));
    }

    void aRegionOnTheLeftMonitorMayEndAtTheEdgeToTheRightOne()
    {
        // The pointer goes on into the next monitor, where the drag is held at this one's edge.
        RegionSelection selection(twoMonitors, QRect(0, 0, 1920, 1080), 16);
        QCOMPARE(drag(selection, { 1800, 100 }, { 1919, 200 }), QRect(1800, 100, 119, 100));
        QCOMPARE(drag(selection, { 1800, 100 }, { 2300, 200 }), QRect(1800, 100, 120, 100));
    }

    void smallRegionsAreRefusedAndTheUserMayDragAgain()
    {
        const QRect monitor(0, 0, 1920, 1080);
        RegionSelection selection({ monitor }, monitor, 16);
        QCOMPARE(drag(selection, { 10, 10 }, { 10, 10 }), std::nullopt); // a click
        QCOMPARE(drag(selection, { 10, 10 }, { 25, 210 }), std::nullopt); // 15 x 200
        QCOMPARE(drag(selection, { 10, 10 }, { 210, 25.99 }), std::nullopt);
        QCOMPARE(selection.rectangle(), QRectF(10, 10, 200, 15.99)); // still shown until the next drag
        QCOMPARE(drag(selection, { 10, 10 }, { 26, 26 }), QRect(10, 10, 16, 16));
    }

    void aReleaseWithoutAPressDeliversNothing()
    {
        const QRect monitor(0, 0, 1920, 1080);
        RegionSelection selection({ monitor }, monitor, 16);
        selection.move({ 500, 500 });
        QVERIFY(selection.rectangle().isEmpty());
        QCOMPARE(selection.release({ 500, 500 }), std::nullopt);
    }

    void fractionsAreRoundedOutward()
    {
        const QRect bounds(0, 0, 1920, 1080);
        QCOMPARE(RegionSelection::covered(QRectF(10.4, 20.6, 100.2, 50.1), bounds), QRect(10, 20, 101, 51));
        RegionSelection selection({ bounds }, bounds, 16);
        QCOMPARE(drag(selection, { 10.4, 20.6 }, { 110.6, 70.7 }), QRect(10, 20, 101, 51));
    }

    void theResultNeverLeavesTheBounds()
    {
        const QRect bounds(0, 0, 1920, 1080);
        QCOMPARE(
            RegionSelection::covered(QRectF(1900.5, 1060.5, 19.5, 19.5), bounds), QRect(1900, 1060, 20, 20));
        QCOMPARE(
            RegionSelection::covered(QRectF(1900.5, 1060.5, 19.7, 19.7), bounds), QRect(1900, 1060, 20, 20));
    }
};

QTEST_GUILESS_MAIN(TestRegionSelection)
#include "tst_regionselection.moc"
