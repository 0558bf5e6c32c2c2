#include "ImageHistory.h"

#include <QTest>

namespace {

// Images told apart by their width.
QImage imageOfWidth(int width)
{
    QImage image(width, 3, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    return image;
}

} // namespace

class TestImageHistory : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void startsWithTheOriginalAndNothingToUndo()
    {
        const ImageHistory history(imageOfWidth(100));
        QCOMPARE(history.original().width(), 100);
        QVERIFY(history.undoImages().isEmpty());
        QVERIFY(!history.canUndo());
    }

    void undoesInReverseOrder()
    {
        ImageHistory history(imageOfWidth(100));
        history.push(imageOfWidth(100));
        history.push(imageOfWidth(90));
        history.push(imageOfWidth(80));
        QVERIFY(history.canUndo());
        QCOMPARE(history.takeLast()->width(), 80);
        QCOMPARE(history.takeLast()->width(), 90);
        QCOMPARE(history.takeLast()->width(), 100);
        QVERIFY(!history.canUndo());
        QVERIFY(!history.takeLast());
        QCOMPARE(history.original().width(), 100);
    }

    void keepsTheTwentyMostRecentOldestFirst()
    {
        ImageHistory history(imageOfWidth(500));
        for (int step = 1; step <= 25; ++step)
            history.push(imageOfWidth(500 - step));
        QCOMPARE(history.undoImages().size(), 20);
        QCOMPARE(ImageHistory::limit, 20);
        // Steps 1 to 5 are forgotten; 6 is now the oldest.
        QCOMPARE(history.undoImages().first().width(), 494);
        QCOMPARE(history.undoImages().last().width(), 475);

        int undone = 0;
        while (history.takeLast())
            ++undone;
        QCOMPARE(undone, 20);
        QVERIFY(!history.canUndo());
    }

    void theTwentiethStepIsStillKept()
    {
        ImageHistory history(imageOfWidth(500));
        for (int step = 1; step <= 20; ++step)
            history.push(imageOfWidth(step));
        QCOMPARE(history.undoImages().size(), 20);
        QCOMPARE(history.undoImages().first().width(), 1);
        history.push(imageOfWidth(21));
        QCOMPARE(history.undoImages().size(), 20);
        QCOMPARE(history.undoImages().first().width(), 2);
    }

    void clearForgetsEveryStepButNotTheOriginal()
    {
        ImageHistory history(imageOfWidth(100));
        history.push(imageOfWidth(100));
        history.push(imageOfWidth(50));
        history.clear();
        QVERIFY(!history.canUndo());
        QVERIFY(!history.takeLast());
        QCOMPARE(history.original().width(), 100);
    }

    void anImageWithoutBitmapIsKeptAsIs()
    {
        const ImageHistory history { QImage() };
        QVERIFY(history.original().isNull());
        QVERIFY(!history.canUndo());
    }
};

QTEST_APPLESS_MAIN(TestImageHistory)
#include "tst_imagehistory.moc"
