#include "CropSelection.h"

#include <QTest>

class TestCropSelection : public QObject {
    Q_OBJECT

    const QRectF m_drawn { 100, 50, 400, 300 };

private Q_SLOTS:
    void startsWithoutSelectionOrDrag()
    {
        const CropSelection selection;
        QVERIFY(selection.isEmpty());
        QCOMPARE(selection.rect(), QRectF());
        QVERIFY(!selection.isDragging());
        QVERIFY(!selection.isUsable());
    }

    void pressInsideTheImageStartsADragAndClears()
    {
        CropSelection selection;
        QVERIFY(selection.press(QPointF(150, 100), m_drawn));
        QVERIFY(selection.drag(QPointF(250, 200), m_drawn));
        selection.release();
        QCOMPARE(selection.rect(), QRectF(150, 100, 100, 100));

        QVERIFY(selection.press(QPointF(300, 300), m_drawn));
        QVERIFY(selection.isDragging());
        QCOMPARE(*selection.start(), QPointF(300, 300));
        QVERIFY(selection.isEmpty());
    }

    void pressOutsideTheImageKeepsTheSelection()
    {
        CropSelection selection;
        selection.press(QPointF(150, 100), m_drawn);
        selection.drag(QPointF(250, 200), m_drawn);
        selection.release();

        QVERIFY(!selection.press(QPointF(50, 100), m_drawn));
        QVERIFY(!selection.press(QPointF(500, 100), m_drawn)); // the right edge is outside
        QVERIFY(!selection.press(QPointF(150, 350), m_drawn)); // so is the bottom edge
        QVERIFY(!selection.isDragging());
        QCOMPARE(selection.rect(), QRectF(150, 100, 100, 100));
        // And a drag after such a press changes nothing.
        QVERIFY(!selection.drag(QPointF(400, 300), m_drawn));
        QCOMPARE(selection.rect(), QRectF(150, 100, 100, 100));
    }

    void dragWithoutPressIsIgnored()
    {
        CropSelection selection;
        QVERIFY(!selection.drag(QPointF(200, 200), m_drawn));
        QVERIFY(selection.isEmpty());
    }

    void draggingBeyondTheImageStopsAtItsEdge()
    {
        CropSelection selection;
        selection.press(QPointF(300, 200), m_drawn);
        QVERIFY(selection.drag(QPointF(900, 900), m_drawn));
        QCOMPARE(selection.rect(), QRectF(300, 200, 200, 150));
        QVERIFY(selection.drag(QPointF(-900, -900), m_drawn));
        QCOMPARE(selection.rect(), QRectF(100, 50, 200, 150));
    }

    void dragsUpAndLeftToo()
    {
        CropSelection selection;
        selection.press(QPointF(300, 200), m_drawn);
        selection.drag(QPointF(200, 120), m_drawn);
        QCOMPARE(selection.rect(), QRectF(200, 120, 100, 80));
        QVERIFY(selection.isUsable());
    }

    void onePointDragIsNotUsable()
    {
        CropSelection selection;
        selection.press(QPointF(300, 200), m_drawn);
        selection.drag(QPointF(301, 260), m_drawn);
        QCOMPARE(selection.rect().width(), 1.0);
        QVERIFY(!selection.isUsable());
        selection.drag(QPointF(302, 260), m_drawn);
        QVERIFY(selection.isUsable());
    }

    void releaseEndsTheDragAndKeepsTheSelection()
    {
        CropSelection selection;
        selection.press(QPointF(300, 200), m_drawn);
        selection.drag(QPointF(350, 250), m_drawn);
        selection.release();
        QVERIFY(!selection.isDragging());
        QVERIFY(!selection.start());
        QCOMPARE(selection.rect(), QRectF(300, 200, 50, 50));
        QVERIFY(!selection.drag(QPointF(400, 300), m_drawn));
        QCOMPARE(selection.rect(), QRectF(300, 200, 50, 50));
    }

    void clearDropsOnlyTheSelection()
    {
        CropSelection selection;
        selection.press(QPointF(300, 200), m_drawn);
        selection.drag(QPointF(350, 250), m_drawn);
        selection.clear();
        QVERIFY(selection.isEmpty());
        QVERIFY(!selection.isUsable());
        QVERIFY(selection.isDragging());
        selection.drag(QPointF(320, 230), m_drawn);
        QCOMPARE(selection.rect(), QRectF(300, 200, 20, 30));
    }
};

QTEST_APPLESS_MAIN(TestCropSelection)
#include "tst_cropselection.moc"
