#include "CaptureDesktop.h"
#include "CaptureProcess.h"
#include "DesktopPattern.h"
#include "PatternWindow.h"

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
constexpr quint32 escapeKeysym = 0xff1b;
}

// vexet-capture -i -s on the virtual desktop, driven through XTest like a hand on the mouse.
class TestCaptureRegion : public QObject {
    Q_OBJECT

    CaptureDesktop m_desktop;
    std::unique_ptr<PatternWindow> m_first;
    std::unique_ptr<PatternWindow> m_second;
    const QRect m_firstMonitor { 0, 0, 1920, 1080 };
    const QRect m_secondMonitor { 1920, 0, 1280, 1024 };
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<CaptureProcess> m_tool;

    QString path() const { return m_dir->filePath(u"capture.png"_s); }

    QStringList entries() const
    {
        return QDir(m_dir->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    // Starts the tool the way the capture service does and waits until it holds the input.
    void startSelecting()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_tool = std::make_unique<CaptureProcess>(
            QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-s"_s, path() });
        QVERIFY(m_tool->start());
        QVERIFY2(m_desktop.waitForPointerHeldElsewhere(), "vexet-capture did not take the pointer");
    }

    void expectPicture(const QRect& rect)
    {
        QVERIFY2(m_tool->waitForExit(), "vexet-capture did not finish");
        QCOMPARE(m_tool->exitCode(), 0);
        QVERIFY(m_tool->standardError().isEmpty());
        QCOMPARE(entries(), QStringList { u"capture.png"_s });
        const QImage image = QImage(path()).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), rect.size());
        QVERIFY(image == DesktopPattern::of(rect));
    }

    void expectCancelled()
    {
        QVERIFY2(m_tool->waitForExit(), "vexet-capture did not finish");
        QCOMPARE(m_tool->exitCode(), 1);
        QVERIFY(m_tool->standardError().isEmpty());
        QVERIFY(entries().isEmpty());
        // The input is everybody's again.
        QVERIFY(!m_desktop.pointerHeldElsewhere());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_desktop.isReady(), "needs the virtual desktop (X server with XTest)");
        m_first.reset(PatternWindow::cover(m_firstMonitor));
        m_second.reset(PatternWindow::cover(m_secondMonitor));
        m_first->show();
        m_second->show();
        QVERIFY(m_desktop.waitForPixels(m_firstMonitor, m_first->contents()));
        QVERIFY(m_desktop.waitForPixels(m_secondMonitor, m_second->contents()));
    }

    void init()
    {
        // The frozen picture is taken from whatever is shown: show the pattern again.
        m_first->show();
        QVERIFY(m_desktop.waitForPixels(m_firstMonitor, m_first->contents()));
    }

    void cleanup()
    {
        m_tool.reset();
        m_dir.reset();
    }

    // A drag from a to b takes the pixels between the two corners: columns min(a.x, b.x) up to
    // max(a.x, b.x) - 1, rows likewise; at the far edge of a monitor the last pixel is included.
    void aDragTakesThePixelsBetweenItsCorners_data()
    {
        QTest::addColumn<QPoint>("from");
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<QRect>("taken");
        QTest::newRow("within the first monitor")
            << QPoint(100, 100) << QPoint(300, 200) << QRect(100, 100, 200, 100);
        QTest::newRow("within the second monitor, backwards")
            << QPoint(2900, 800) << QPoint(2050, 130) << QRect(2050, 130, 850, 670);
        QTest::newRow("across the two monitors")
            << QPoint(1800, 300) << QPoint(2100, 700) << QRect(1800, 300, 300, 400);
        QTest::newRow("to the bottom-right corner of the second monitor")
            << QPoint(3000, 900) << QPoint(3199, 1023) << QRect(3000, 900, 200, 124);
    }

    void aDragTakesThePixelsBetweenItsCorners()
    {
        QFETCH(QPoint, from);
        QFETCH(QPoint, to);
        QFETCH(QRect, taken);
        startSelecting();
        m_desktop.drag(from, to);
        expectPicture(taken);
    }

    void thePictureIsTheDesktopAsItWasAtTheStart()
    {
        startSelecting();
        // What changes under the overlay afterwards is not in the picture.
        const xcb_window_t cover = static_cast<xcb_window_t>(m_first->winId());
        m_first->hide();
        QVERIFY(QTest::qWaitFor([&] { return !m_desktop.windows().isViewable(cover); }, 20000));
        m_desktop.drag(QPoint(400, 300), QPoint(1000, 700));
        expectPicture(QRect(400, 300, 600, 400));
    }

    void aClickWithoutDragKeepsWaiting()
    {
        startSelecting();
        m_desktop.input().click(QPoint(500, 500));
        QTest::qWait(800);
        QVERIFY(m_tool->isRunning());
        m_desktop.drag(QPoint(10, 20), QPoint(60, 90));
        expectPicture(QRect(10, 20, 50, 70));
    }

    void escapeCancels()
    {
        startSelecting();
        m_desktop.tapKey(escapeKeysym);
        expectCancelled();
    }

    void escapeCancelsInTheMiddleOfADrag()
    {
        startSelecting();
        m_desktop.input().movePointer(QPoint(200, 200));
        m_desktop.input().pause(50);
        m_desktop.input().pressButton(1);
        m_desktop.input().pause(50);
        m_desktop.input().movePointer(QPoint(400, 400));
        m_desktop.tapKey(escapeKeysym);
        expectCancelled();
        m_desktop.input().releaseButton(1);
    }

    void aRightClickCancels()
    {
        startSelecting();
        m_desktop.input().click(QPoint(700, 600), 3);
        expectCancelled();
    }

    void aGrabTheServerRefusesIsAFailure()
    {
        QVERIFY(m_desktop.holdInput());
        QTemporaryDir dir;
        const CaptureProcess::Outcome outcome = CaptureProcess::run(
            { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-s"_s, dir.filePath(u"capture.png"_s) });
        m_desktop.releaseInput();
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(QString::fromUtf8(outcome.error),
            u"vexet-capture: Klavye ve fare alınamadı; başka bir program tutuyor.\n"_s);
        QVERIFY(
            QDir(dir.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
    }

    void aTerminatedToolLeavesNothing()
    {
        startSelecting();
        m_desktop.input().movePointer(QPoint(200, 200));
        m_desktop.input().pressButton(1);
        m_desktop.input().movePointer(QPoint(400, 400));
        QVERIFY(::kill(static_cast<pid_t>(m_tool->pid()), SIGTERM) == 0);
        QVERIFY(m_tool->waitForExit());
        m_desktop.input().releaseButton(1);
        QVERIFY(entries().isEmpty());
        QVERIFY(!m_desktop.pointerHeldElsewhere());
    }
};

QTEST_MAIN(TestCaptureRegion)
#include "tst_capture_region.moc"
