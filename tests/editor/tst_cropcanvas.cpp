#include "CropCanvas.h"
#include "EditorTesting.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

using namespace EditorTesting;

namespace {

// Colours within a step of each other (smooth scaling and blending round).
bool near(QColor actual, QColor expected, int tolerance = 2)
{
    return qAbs(actual.red() - expected.red()) <= tolerance
        && qAbs(actual.green() - expected.green()) <= tolerance
        && qAbs(actual.blue() - expected.blue()) <= tolerance;
}

QImage filled(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

} // namespace

class TestCropCanvas : public QObject {
    Q_OBJECT

    std::unique_ptr<CropCanvas> m_canvas;
    QList<bool> m_reports;
    int m_copies = 0;

    // A canvas of the given size on screen, its reports recorded from here on.
    bool showCanvas(const QImage& image, QSize size)
    {
        m_canvas = std::make_unique<CropCanvas>();
        m_canvas->setImage(image);
        m_canvas->resize(size);
        m_canvas->show();
        if (!QTest::qWaitForWindowExposed(m_canvas.get()) || m_canvas->size() != size)
            return false;
        m_reports.clear();
        m_copies = 0;
        m_canvas->onSelection = [this](bool usable) { m_reports.append(usable); };
        m_canvas->onCopy = [this] { ++m_copies; };
        return true;
    }

private Q_SLOTS:
    void cleanup() { m_canvas.reset(); }

    void theImageIsScaledToFitAndCentred()
    {
        // 2000 × 1000 pixels in 1000 × 600 points: half size, 50 points above and below.
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        QCOMPARE(m_canvas->imageRect(), QRectF(0, 50, 1000, 500));
        // A small image is enlarged.
        m_canvas->setImage(coordinateImage(100, 300));
        QCOMPARE(m_canvas->imageRect(), QRectF(400, 0, 200, 600));
    }

    void draggingSelectsAndReports()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        press(m_canvas.get(), QPoint(100, 100));
        QVERIFY(m_canvas->isDragging());
        QCOMPARE(m_reports, QList<bool> { false });
        moveTo(m_canvas.get(), QPoint(300, 250));
        release(m_canvas.get(), QPoint(300, 250));
        QCOMPARE(m_canvas->selection(), QRectF(100, 100, 200, 150));
        QCOMPARE(m_reports, (QList<bool> { false, true }));
        QVERIFY(!m_canvas->isDragging());
        // Moving without the button changes nothing once the drag is over.
        moveTo(m_canvas.get(), QPoint(500, 400));
        QCOMPARE(m_canvas->selection(), QRectF(100, 100, 200, 150));
    }

    void aNewPressInsideTheImageClearsTheSelection()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        drag(m_canvas.get(), QPoint(100, 100), QPoint(300, 250));
        m_reports.clear();
        press(m_canvas.get(), QPoint(600, 300));
        QVERIFY(m_canvas->selection().isEmpty());
        QCOMPARE(m_reports, QList<bool> { false });
        release(m_canvas.get(), QPoint(600, 300));
        QVERIFY(m_canvas->croppedImage().isNull());
    }

    void aPressOutsideTheImageKeepsTheSelection()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        drag(m_canvas.get(), QPoint(100, 100), QPoint(300, 250));
        m_reports.clear();
        // Above the drawn image, in the band the fit leaves free.
        press(m_canvas.get(), QPoint(500, 20));
        QVERIFY(!m_canvas->isDragging());
        moveTo(m_canvas.get(), QPoint(700, 400));
        release(m_canvas.get(), QPoint(700, 400));
        QCOMPARE(m_canvas->selection(), QRectF(100, 100, 200, 150));
        QVERIFY(m_reports.isEmpty());
    }

    void draggingPastTheImageStopsAtItsEdge()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        press(m_canvas.get(), QPoint(900, 500));
        for (int i = 0; i < 2; ++i)
            QTest::ignoreMessage(
                QtWarningMsg, "Mouse event at 1100, 700 occurs outside target window (1000x600).");
        moveTo(m_canvas.get(), QPoint(1100, 700)); // beyond the window, the drag keeps the mouse
        release(m_canvas.get(), QPoint(1100, 700));
        QCOMPARE(m_canvas->selection(), QRectF(900, 500, 100, 50));
        QCOMPARE(m_reports.last(), true);

        press(m_canvas.get(), QPoint(100, 100));
        moveTo(m_canvas.get(), QPoint(-80, 10));
        release(m_canvas.get(), QPoint(-80, 10));
        QCOMPARE(m_canvas->selection(), QRectF(0, 50, 100, 50));
        // The whole edge strip is cropped, down to the first pixel row and column.
        QVERIFY(isCoordinateCrop(m_canvas->croppedImage(), QRect(0, 0, 200, 100)));
    }

    void aOnePointDragCannotCrop()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        press(m_canvas.get(), QPoint(200, 200));
        moveTo(m_canvas.get(), QPoint(201, 300));
        QCOMPARE(m_reports, (QList<bool> { false, false }));
        QVERIFY(m_canvas->croppedImage().isNull());
        moveTo(m_canvas.get(), QPoint(202, 300));
        release(m_canvas.get(), QPoint(202, 300));
        QCOMPARE(m_reports.last(), true);
        QVERIFY(!m_canvas->croppedImage().isNull());
    }

    void cropKeepsExactlyThePixelsUnderTheSelection()
    {
        // 400 × 200 pixels drawn at twice their size from y = 50.
        QVERIFY(showCanvas(coordinateImage(400, 200), QSize(800, 500)));
        QCOMPARE(m_canvas->imageRect(), QRectF(0, 50, 800, 400));
        drag(m_canvas.get(), QPoint(101, 151), QPoint(301, 253));
        QCOMPARE(m_canvas->selection(), QRectF(101, 151, 200, 102));
        // Pixels 50.5 … 150.5 × 50.5 … 101.5, rounded outward.
        const QImage cropped = m_canvas->croppedImage();
        QVERIFY(isCoordinateCrop(cropped, QRect(50, 50, 101, 52)));
    }

    void halfAPixelRoundsOutward()
    {
        // 2000 pixels drawn 1000 points wide: 10.25 points in is pixel 20.5, rounded out to 20.
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        dragPrecisely(m_canvas.get(), QPointF(10.25, 60), QPointF(40.25, 110));
        QCOMPARE(m_canvas->selection(), QRectF(10.25, 60, 30, 50));
        const QImage cropped = m_canvas->croppedImage();
        QCOMPARE(coordinateOf(cropped.pixel(0, 0)), QPoint(20, 20));
        QVERIFY(isCoordinateCrop(cropped, QRect(20, 20, 61, 100)));
    }

    void escapeClearsTheSelection()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        drag(m_canvas.get(), QPoint(100, 100), QPoint(300, 250));
        QVERIFY(m_canvas->hasFocus());
        m_reports.clear();
        QTest::keyClick(m_canvas.get(), Qt::Key_Escape);
        QVERIFY(m_canvas->selection().isEmpty());
        QCOMPARE(m_reports, QList<bool> { false });
        QVERIFY(m_canvas->croppedImage().isNull());
    }

    void theCopyKeyReachesOnCopy()
    {
        QVERIFY(showCanvas(coordinateImage(200, 100), QSize(400, 300)));
        drag(m_canvas.get(), QPoint(100, 100), QPoint(300, 250));
        QTest::keyClick(m_canvas.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(m_copies, 1);
        QTest::keyClick(m_canvas.get(), Qt::Key_C);
        QTest::keyClick(m_canvas.get(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_copies, 1);
        // The selection is not touched by copying.
        QCOMPARE(m_canvas->selection(), QRectF(100, 100, 200, 150));
        m_canvas->onCopy = nullptr;
        QTest::keyClick(m_canvas.get(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(m_copies, 1);
    }

    void resizingClearsTheSelection()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        drag(m_canvas.get(), QPoint(100, 100), QPoint(300, 250));
        m_reports.clear();
        m_canvas->resize(900, 560);
        QTRY_COMPARE(m_canvas->size(), QSize(900, 560));
        QVERIFY(m_canvas->selection().isEmpty());
        QVERIFY(!m_reports.isEmpty());
        QCOMPARE(m_reports.last(), false);
        QVERIFY(m_canvas->croppedImage().isNull());
    }

    void aPressTakesTheKeyboard()
    {
        QWidget window;
        auto* other = new QPushButton(QStringLiteral("x"), &window);
        auto* canvas = new CropCanvas(&window);
        canvas->setImage(coordinateImage(100, 100));
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(other);
        layout->addWidget(canvas, 1);
        window.resize(400, 400);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        other->setFocus();
        QVERIFY(!canvas->hasFocus());
        // Even outside the drawn image.
        press(canvas, QPoint(2, 2));
        release(canvas, QPoint(2, 2));
        QVERIFY(canvas->hasFocus());
    }

    void onlyTheLeftButtonSelects()
    {
        QVERIFY(showCanvas(coordinateImage(2000, 1000), QSize(1000, 600)));
        press(m_canvas.get(), QPoint(100, 100), Qt::RightButton);
        moveTo(m_canvas.get(), QPoint(300, 250));
        release(m_canvas.get(), QPoint(300, 250), Qt::RightButton);
        QVERIFY(m_canvas->selection().isEmpty());
        QVERIFY(m_reports.isEmpty());
    }

    void drawingDimsTheImageOutsideTheSelectionAndOutlinesIt()
    {
        const QColor colour(200, 100, 50);
        QVERIFY(showCanvas(filled(QSize(2000, 1000), colour), QSize(1000, 600)));
        drag(m_canvas.get(), QPoint(100, 150), QPoint(300, 250));
        const QImage shot = m_canvas->grab().toImage();
        const QColor background = m_canvas->palette().color(QPalette::Base);
        const QColor accent = m_canvas->palette().color(QPalette::Highlight);
        const QColor dimmed(120, 60, 30); // 60 % left after black at 40 %

        QVERIFY(near(shot.pixelColor(500, 20), background)); // beside the image: not dimmed
        QVERIFY(near(shot.pixelColor(500, 580), background));
        QVERIFY(near(shot.pixelColor(600, 400), dimmed));
        QVERIFY(near(shot.pixelColor(200, 100), dimmed));
        QVERIFY(near(shot.pixelColor(200, 200), colour)); // inside the selection
        // The outline on the top edge: a 2-point white line with a 1-point accent line centred on it.
        const QColor mixed((255 + accent.red()) / 2, (255 + accent.green()) / 2, (255 + accent.blue()) / 2);
        QVERIFY(near(shot.pixelColor(200, 148), dimmed));
        QVERIFY2(near(shot.pixelColor(200, 149), mixed, 3), qPrintable(shot.pixelColor(200, 149).name()));
        QVERIFY2(near(shot.pixelColor(200, 150), mixed, 3), qPrintable(shot.pixelColor(200, 150).name()));
        QVERIFY(near(shot.pixelColor(200, 151), colour));
        // And the same on the left edge.
        QVERIFY(near(shot.pixelColor(98, 200), dimmed));
        QVERIFY(near(shot.pixelColor(99, 200), mixed, 3));
        QVERIFY(near(shot.pixelColor(100, 200), mixed, 3));
        QVERIFY(near(shot.pixelColor(101, 200), colour));
    }

    void withoutSelectionNothingIsDimmed()
    {
        const QColor colour(10, 200, 90);
        QVERIFY(showCanvas(filled(QSize(2000, 1000), colour), QSize(1000, 600)));
        const QImage shot = m_canvas->grab().toImage();
        QVERIFY(near(shot.pixelColor(500, 300), colour));
        QVERIFY(near(shot.pixelColor(1, 51), colour));
        QVERIFY(near(shot.pixelColor(500, 10), m_canvas->palette().color(QPalette::Base)));
    }

    void withoutImageNothingCanBeSelected()
    {
        QVERIFY(showCanvas(QImage(), QSize(600, 400)));
        QCOMPARE(m_canvas->imageRect(), QRectF());
        drag(m_canvas.get(), QPoint(100, 100), QPoint(300, 250));
        QVERIFY(m_canvas->selection().isEmpty());
        QVERIFY(m_reports.isEmpty());
        QVERIFY(m_canvas->croppedImage().isNull());
        const QImage shot = m_canvas->grab().toImage();
        QVERIFY(near(shot.pixelColor(300, 200), m_canvas->palette().color(QPalette::Base)));
    }
};

QTEST_MAIN(TestCropCanvas)
#include "tst_cropcanvas.moc"
