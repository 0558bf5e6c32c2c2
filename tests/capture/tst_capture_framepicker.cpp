#include "FramePicker.h"

#include <QTest>

// Which frame a click picks.
class TestCaptureFramePicker : public QObject {
    Q_OBJECT

    const QRect m_desktop { 0, 0, 3200, 1080 };

private Q_SLOTS:
    void picksTheTopmostFrameContainingThePoint()
    {
        const QRect bottom(100, 100, 400, 300);
        const QRect middle(300, 200, 400, 300);
        const QRect top(350, 250, 100, 100);
        const FramePicker picker({ bottom, middle, top }, m_desktop);
        QCOMPARE(picker.at(QPoint(150, 150)), bottom);
        QCOMPARE(picker.at(QPoint(320, 220)), middle);
        QCOMPARE(picker.at(QPoint(400, 300)), top);
        QCOMPARE(picker.at(QPoint(650, 450)), middle);
        // Edges belong to the frame: its first and last pixel rows and columns.
        QCOMPARE(picker.at(QPoint(350, 250)), top);
        QCOMPARE(picker.at(QPoint(449, 349)), top);
        QCOMPARE(picker.at(QPoint(450, 349)), middle);
    }

    void theBareDesktopPicksNothing()
    {
        const FramePicker picker({ QRect(100, 100, 400, 300) }, m_desktop);
        QCOMPARE(picker.at(QPoint(99, 100)), std::nullopt);
        QCOMPARE(picker.at(QPoint(100, 400)), std::nullopt);
        QCOMPARE(picker.at(QPoint(2000, 500)), std::nullopt);
        QCOMPARE(FramePicker({}, m_desktop).at(QPoint(10, 10)), std::nullopt);
    }

    void framesAreClippedToTheDesktop()
    {
        const FramePicker picker({ QRect(-50, -20, 300, 200), QRect(3100, 1000, 300, 300) }, m_desktop);
        QCOMPARE(picker.at(QPoint(0, 0)), QRect(0, 0, 250, 180));
        QCOMPARE(picker.at(QPoint(3199, 1079)), QRect(3100, 1000, 100, 80));
        // Outside the desktop nothing can be picked, even where a frame reaches.
        QCOMPARE(picker.at(QPoint(-10, 10)), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestCaptureFramePicker)
#include "tst_capture_framepicker.moc"
