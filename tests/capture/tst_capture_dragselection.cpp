#include "DragSelection.h"

#include <QTest>

// Which pixels a drag selects, on the two monitors of the virtual desktop: 1920 x 1080 at 0,0
// and 1280 x 1024 at 1920,0 (the root is 3200 x 1080; below the second monitor nobody can go).
class TestCaptureDragSelection : public QObject {
    Q_OBJECT

    const DragSelection m_selection { { QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024) } };

private Q_SLOTS:
    void spansTheRectangleBetweenTheTwoCorners_data()
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
        // Up to the pixels the pointer cannot go past: the right and bottom edges are included.
        QTest::newRow("to the right edge")
            << QPoint(3000, 500) << QPoint(3199, 600) << QRect(3000, 500, 200, 100);
        QTest::newRow("to the bottom of the second monitor")
            << QPoint(2000, 900) << QPoint(2100, 1023) << QRect(2000, 900, 100, 124);
        QTest::newRow("to the bottom of the first monitor")
            << QPoint(1000, 900) << QPoint(1100, 1079) << QRect(1000, 900, 100, 180);
        // Below the second monitor nobody can go, so the bottom-right corner is the far edge.
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

    void spansTheRectangleBetweenTheTwoCorners()
    {
        QFETCH(QPoint, from);
        QFETCH(QPoint, to);
        QTEST(m_selection.between(from, to), "selected");
    }

    void aDragWithoutWidthOrHeightSelectsNothing()
    {
        QVERIFY(m_selection.between(QPoint(5, 5), QPoint(5, 5)).isEmpty());
        QVERIFY(m_selection.between(QPoint(5, 5), QPoint(5, 50)).isEmpty());
        QVERIFY(m_selection.between(QPoint(5, 5), QPoint(50, 5)).isEmpty());
        QVERIFY(m_selection.between(QPoint(3199, 1023), QPoint(3199, 1000)).isEmpty());
    }

    void withoutMonitorsPointsAreCornersOnly()
    {
        const DragSelection none({});
        QCOMPARE(none.between(QPoint(0, 0), QPoint(4, 3)), QRect(0, 0, 4, 3));
    }
};

QTEST_GUILESS_MAIN(TestCaptureDragSelection)
#include "tst_capture_dragselection.moc"
