#include "CropCanvas.h"
#include "EditorController.h"
#include "EditorTesting.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace EditorTesting;

class TestEditorController : public QObject {
    Q_OBJECT

    std::unique_ptr<EditorController> m_editor;

    bool open(const QImage& image)
    {
        m_editor = std::make_unique<EditorController>(image);
        m_editor->showWindow();
        return QTest::qWaitForWindowActive(m_editor.get());
    }

    CropCanvas* canvas() const { return m_editor->canvas(); }

    // A drag from just inside the drawn image's top left corner to inset points before its bottom
    // right corner.
    void selectAlmostAll(int inset)
    {
        const QRect drawn = canvas()->imageRect().toAlignedRect();
        drag(canvas(), drawn.topLeft() + QPoint(1, 1), drawn.bottomRight() - QPoint(inset, inset));
    }

    static void forgetClipboard() { QGuiApplication::clipboard()->setText(u"önceki"_s); }

private Q_SLOTS:
    void cleanup() { m_editor.reset(); }

    void theWindowAndItsRows()
    {
        QVERIFY(open(coordinateImage(1440, 900)));
        EditorController& editor = *m_editor;
        QCOMPARE(editor.windowTitle(), u"Vexet — Önizleme ve kırpma"_s);
        QCOMPARE(editor.size(), QSize(1000, 700));
        QCOMPARE(editor.minimumSize(), QSize(780, 450));
        QVERIFY(!editor.testAttribute(Qt::WA_QuitOnClose));
        QTRY_VERIFY(canvas()->hasFocus());

        QLabel* help = editor.helpLabel();
        QCOMPARE(help->text(), u"Kırpmak için resmin üzerinde sürükle. Esc seçimi temizler."_s);
        QCOMPARE(help->font().pixelSize(), 13);
        QVERIFY(help->wordWrap());
        QCOMPARE(help->pos(), QPoint(18, 18));

        const QList<QPushButton*> buttons { editor.cropButton(), editor.undoButton(), editor.resetButton(),
            editor.copyButton(), editor.saveButton() };
        const QStringList titles { u"Seçimi kırp"_s, u"Geri al"_s, u"Orijinale dön"_s, u"Kopyala"_s,
            u"Kaydet…"_s };
        const QList<bool> enabled { false, false, true, true, true };
        for (qsizetype i = 0; i < buttons.size(); ++i) {
            QCOMPARE(buttons[i]->text(), titles[i]);
            QCOMPARE(buttons[i]->isEnabled(), enabled[i]);
            QCOMPARE(buttons[i]->y(), buttons[0]->y());
            if (i > 0)
                QCOMPARE(buttons[i]->x() - buttons[i - 1]->geometry().right() - 1, 10);
        }
        QCOMPARE(buttons[0]->x(), 18);
        QCOMPARE(buttons[0]->y() - help->geometry().bottom() - 1, 12);

        // The canvas spans the width and takes the spare height; the status line closes the column.
        const QRect canvasArea = canvas()->geometry();
        QCOMPARE(canvasArea.x(), 18);
        QCOMPARE(canvasArea.width(), 1000 - 2 * 18);
        QCOMPARE(canvasArea.y() - buttons[0]->geometry().bottom() - 1, 12);
        QLabel* status = editor.statusLabel();
        QCOMPARE(status->font().pixelSize(), 12);
        QVERIFY(status->wordWrap());
        QCOMPARE(status->x(), 18);
        QCOMPARE(status->y() - canvasArea.bottom() - 1, 12);
        QCOMPARE(status->geometry().bottom() + 1, 700 - 18);
    }

    void theCanvasKeepsItsMinimumHeight()
    {
        QVERIFY(open(coordinateImage(1440, 900)));
        m_editor->resize(100, 100);
        QTRY_COMPARE(m_editor->size(), QSize(780, 450));
        QVERIFY(canvas()->height() >= 240);
    }

    void theStatusLineShowsThePixelSize()
    {
        QVERIFY(open(coordinateImage(1440, 900)));
        QCOMPARE(m_editor->statusLabel()->text(), u"1440 × 900 piksel"_s);
        forgetClipboard();
        QTest::mouseClick(m_editor->copyButton(), Qt::LeftButton);
        QCOMPARE(m_editor->statusLabel()->text(), u"1440 × 900 piksel • Panoya kopyalandı"_s);
    }

    void copyPutsTheWholeImageOnTheClipboardAndKeepsTheSelection()
    {
        const QImage image = coordinateImage(1440, 900);
        QVERIFY(open(image));
        forgetClipboard();
        drag(canvas(), QPoint(200, 100), QPoint(400, 300));
        QVERIFY(m_editor->cropButton()->isEnabled());
        const QRectF selection = canvas()->selection();

        QTest::mouseClick(m_editor->copyButton(), Qt::LeftButton);
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(image.format()), image);
        QCOMPARE(canvas()->selection(), selection);
        QVERIFY(!m_editor->cropButton()->isEnabled());
    }

    void theCopyKeyCopiesWhereverTheKeyboardIs()
    {
        const QImage image = coordinateImage(800, 600);
        QVERIFY(open(image));
        forgetClipboard();
        drag(canvas(), QPoint(200, 100), QPoint(400, 300));
        const QRectF selection = canvas()->selection();
        QVERIFY(canvas()->hasFocus());
        QTest::keyClick(canvas(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(image.format()), image);
        QCOMPARE(m_editor->statusLabel()->text(), u"800 × 600 piksel • Panoya kopyalandı"_s);
        QCOMPARE(canvas()->selection(), selection);
        QVERIFY(!m_editor->cropButton()->isEnabled());
        // The keyboard stayed with the canvas: Escape still clears the selection.
        QVERIFY(canvas()->hasFocus());
        QTest::keyClick(canvas(), Qt::Key_Escape);
        QVERIFY(canvas()->selection().isEmpty());

        forgetClipboard();
        m_editor->resetButton()->setFocus();
        QTest::keyClick(m_editor->resetButton(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(image.format()), image);
    }

    void cropKeepsTheSelectedPixels()
    {
        // Twice the canvas width: every point is two pixels.
        const QImage image = coordinateImage(1928, 800);
        QVERIFY(open(image));
        const QRectF drawn = canvas()->imageRect();
        QCOMPARE(drawn.width(), 964.0);
        drag(canvas(), QPoint(101, 151), QPoint(301, 253));
        QVERIFY(m_editor->cropButton()->isEnabled());
        const int top = int(std::floor(2 * (151 - drawn.y())));
        const int bottom = int(std::ceil(2 * (253 - drawn.y())));
        const QRect expected(202, top, 400, bottom - top);

        QTest::mouseClick(m_editor->cropButton(), Qt::LeftButton);
        QVERIFY(isCoordinateCrop(canvas()->image(), expected));
        QVERIFY(canvas()->selection().isEmpty());
        QVERIFY(!m_editor->cropButton()->isEnabled());
        QVERIFY(m_editor->undoButton()->isEnabled());
        QCOMPARE(m_editor->undoImages().size(), 1);
        QCOMPARE(m_editor->undoImages().first(), image);
        QCOMPARE(m_editor->statusLabel()->text(), u"400 × %1 piksel"_s.arg(expected.height()));

        // The next crop works on this result.
        const QRectF drawnAgain = canvas()->imageRect();
        const QPoint from = drawnAgain.topLeft().toPoint() + QPoint(10, 10);
        drag(canvas(), from, from + QPoint(50, 40));
        QTest::mouseClick(m_editor->cropButton(), Qt::LeftButton);
        const QPoint origin = coordinateOf(canvas()->image().pixel(0, 0));
        QVERIFY(expected.contains(origin));
        QVERIFY(origin != expected.topLeft());
        QVERIFY(isCoordinateCrop(canvas()->image(), QRect(origin, canvas()->image().size())));
        QCOMPARE(m_editor->undoImages().size(), 2);

        QTest::mouseClick(m_editor->undoButton(), Qt::LeftButton);
        QVERIFY(isCoordinateCrop(canvas()->image(), expected));
        QTest::mouseClick(m_editor->undoButton(), Qt::LeftButton);
        QCOMPARE(canvas()->image(), image);
        QVERIFY(!m_editor->undoButton()->isEnabled());
        QCOMPARE(m_editor->statusLabel()->text(), u"1928 × 800 piksel"_s);
        m_editor->undoCrop();
        QCOMPARE(canvas()->image(), image);
    }

    void onlyTheLastTwentyCropsCanBeUndone()
    {
        QVERIFY(open(coordinateImage(1600, 1000)));
        QList<QImage> steps { canvas()->image() };
        for (int crop = 1; crop <= 25; ++crop) {
            selectAlmostAll(3);
            QVERIFY(m_editor->cropButton()->isEnabled());
            QTest::mouseClick(m_editor->cropButton(), Qt::LeftButton);
            QVERIFY(canvas()->image().size() != steps.last().size());
            steps.append(canvas()->image());
        }
        QCOMPARE(m_editor->undoImages().size(), 20);
        for (int undo = 1; undo <= 20; ++undo) {
            QVERIFY(m_editor->undoButton()->isEnabled());
            QTest::mouseClick(m_editor->undoButton(), Qt::LeftButton);
            QCOMPARE(canvas()->image(), steps[25 - undo]);
        }
        QVERIFY(!m_editor->undoButton()->isEnabled());
        QCOMPARE(canvas()->image(), steps[5]);
        m_editor->undoCrop();
        QCOMPARE(canvas()->image(), steps[5]);
    }

    void returningToTheOriginalCannotBeUndone()
    {
        const QImage image = coordinateImage(1200, 700);
        QVERIFY(open(image));
        for (int crop = 0; crop < 3; ++crop) {
            selectAlmostAll(40);
            QTest::mouseClick(m_editor->cropButton(), Qt::LeftButton);
        }
        QCOMPARE(m_editor->undoImages().size(), 3);
        drag(canvas(), canvas()->imageRect().center().toPoint(),
            canvas()->imageRect().center().toPoint() + QPoint(30, 30));
        QTest::mouseClick(m_editor->resetButton(), Qt::LeftButton);
        QCOMPARE(canvas()->image(), image);
        QCOMPARE(m_editor->original(), image);
        QVERIFY(canvas()->selection().isEmpty());
        QVERIFY(m_editor->undoImages().isEmpty());
        QVERIFY(!m_editor->undoButton()->isEnabled());
        QVERIFY(!m_editor->cropButton()->isEnabled());
        QCOMPARE(m_editor->statusLabel()->text(), u"1200 × 700 piksel"_s);
    }

    void aOnePointDragDoesNotEnableCropping()
    {
        const QImage image = coordinateImage(1440, 900);
        QVERIFY(open(image));
        drag(canvas(), QPoint(300, 200), QPoint(301, 400));
        QVERIFY(!m_editor->cropButton()->isEnabled());
        m_editor->crop();
        QCOMPARE(canvas()->image(), image);
        QVERIFY(m_editor->undoImages().isEmpty());
    }

    void aPressBesideTheImageKeepsTheSelectionAndTheCropButton()
    {
        // A tall image leaves room beside it.
        QVERIFY(open(coordinateImage(300, 1200)));
        const QRectF drawn = canvas()->imageRect();
        QVERIFY(drawn.x() > 20);
        const QPoint inside = drawn.center().toPoint();
        drag(canvas(), inside, inside + QPoint(40, 60));
        QVERIFY(m_editor->cropButton()->isEnabled());
        drag(canvas(), QPoint(5, 100), inside);
        QCOMPARE(canvas()->selection(), QRectF(inside, QSizeF(40, 60)));
        QVERIFY(m_editor->cropButton()->isEnabled());
    }

    void escapeAndResizingDisableCropping()
    {
        QVERIFY(open(coordinateImage(1440, 900)));
        drag(canvas(), QPoint(200, 100), QPoint(400, 300));
        QVERIFY(m_editor->cropButton()->isEnabled());
        QTest::keyClick(canvas(), Qt::Key_Escape);
        QVERIFY(!m_editor->cropButton()->isEnabled());
        QVERIFY(canvas()->selection().isEmpty());

        drag(canvas(), QPoint(200, 100), QPoint(400, 300));
        QVERIFY(m_editor->cropButton()->isEnabled());
        m_editor->resize(1100, 760);
        QTRY_COMPARE(m_editor->size(), QSize(1100, 760));
        QTRY_VERIFY(canvas()->selection().isEmpty());
        QVERIFY(!m_editor->cropButton()->isEnabled());
    }

    void anImageWithoutBitmapOpensAnEmptyWindow()
    {
        QVERIFY(open(QImage()));
        QVERIFY(m_editor->isVisible());
        QVERIFY(m_editor->statusLabel()->text().isEmpty());
        QVERIFY(canvas()->image().isNull());
        forgetClipboard();

        drag(canvas(), QPoint(100, 100), QPoint(300, 200));
        QVERIFY(canvas()->selection().isEmpty());
        QVERIFY(!m_editor->cropButton()->isEnabled());
        m_editor->crop();
        QTest::mouseClick(m_editor->copyButton(), Qt::LeftButton);
        QTest::keyClick(canvas(), Qt::Key_C, Qt::ControlModifier);
        QTest::mouseClick(m_editor->saveButton(), Qt::LeftButton);
        QTest::keyClick(canvas(), Qt::Key_S, Qt::ControlModifier);
        QTest::mouseClick(m_editor->resetButton(), Qt::LeftButton);

        QCOMPARE(QGuiApplication::clipboard()->text(), u"önceki"_s);
        QVERIFY(QGuiApplication::clipboard()->image().isNull());
        QVERIFY(!m_editor->savePanel());
        QVERIFY(!m_editor->findChild<QFileDialog*>());
        QVERIFY(m_editor->statusLabel()->text().isEmpty());
        QVERIFY(m_editor->undoImages().isEmpty());
        QVERIFY(canvas()->image().isNull());
    }

    void closingTellsTheOwnerAndNeverQuits()
    {
        // Tests keep the default that quits with the last window, so only the window itself can
        // prevent it.
        QVERIFY(QGuiApplication::quitOnLastWindowClosed());
        QVERIFY(open(coordinateImage(640, 480)));
        int closes = 0;
        m_editor->onClose = [&closes] { ++closes; };
        QuitCounter counter;
        // A quit would be requested while the window closes, before the exit that follows.
        QTimer::singleShot(0, m_editor.get(), [this] {
            m_editor->close();
            QTimer::singleShot(0, [] { QCoreApplication::exit(7); });
        });
        QCOMPARE(QCoreApplication::exec(), 7);
        QCOMPARE(closes, 1);
        QCOMPARE(counter.quits, 0);
        QVERIFY(!m_editor->isVisible());
    }

    void ctrlQAsksTheApplicationToQuit()
    {
        QVERIFY(open(coordinateImage(640, 480)));
        QuitCounter counter;
        QTest::keyClick(canvas(), Qt::Key_Q, Qt::ControlModifier);
        QTRY_COMPARE(counter.quits, 1);
    }
};

QTEST_MAIN(TestEditorController)
#include "tst_editorcontroller.moc"
