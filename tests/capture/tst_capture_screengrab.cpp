#include "X11Connection.h"
#include "X11ScreenGrab.h"
#include "X11Windows.h"

#include "DesktopPattern.h"
#include "PatternWindow.h"

#include <QGuiApplication>
#include <QTest>
#include <memory>

// Grabbing the root window through shared memory gives what the plain protocol gives.
class TestCaptureScreenGrab : public QObject {
    Q_OBJECT

    X11Connection m_connection;
    std::unique_ptr<PatternWindow> m_cover;
    const QRect m_covered { 100, 50, 2400, 900 };

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_connection.isOpen(), "needs the virtual desktop");
        m_cover.reset(PatternWindow::cover(m_covered));
        m_cover->show();
        const QImage expected = DesktopPattern::of(m_covered);
        X11Windows windows(m_connection);
        QVERIFY(QTest::qWaitFor([&] { return windows.grab(m_covered) == expected; }, 20000));
    }

    void sharedMemoryIsUsedWhereOffered()
    {
        X11ScreenGrab grabber(m_connection);
        QVERIFY(grabber.isSupported());
        QVERIFY(grabber.unsupportedReason().isEmpty());
        QVERIFY(grabber.usesSharedMemory());
        QCOMPARE(grabber.rootRect(), QRect(0, 0, 3200, 1080));
    }

    void givesTheExactPixels_data()
    {
        QTest::addColumn<QRect>("rect");
        QTest::newRow("inside the first monitor") << QRect(130, 70, 640, 480);
        QTest::newRow("across the monitors") << QRect(1700, 200, 500, 333);
        QTest::newRow("one pixel") << QRect(2000, 300, 1, 1);
        QTest::newRow("the whole pattern") << m_covered;
    }

    void givesTheExactPixels()
    {
        QFETCH(QRect, rect);
        X11ScreenGrab grabber(m_connection);
        const QImage image = grabber.grab(rect);
        QCOMPARE(image.format(), QImage::Format_RGB32);
        QCOMPARE(image.size(), rect.size());
        QVERIFY(image == DesktopPattern::of(rect));
        // Several grabs in a row each own their pixels.
        const QRect other(300, 300, 200, 100);
        const QImage again = grabber.grab(other);
        QVERIFY(image == DesktopPattern::of(rect));
        QVERIFY(again == DesktopPattern::of(other));
    }

    void theWholeRootMatchesThePlainProtocol()
    {
        X11ScreenGrab grabber(m_connection);
        const QImage shared = grabber.grab(grabber.rootRect());
        QCOMPARE(shared.size(), QSize(3200, 1080));
        QVERIFY(shared == X11Windows(m_connection).grab(grabber.rootRect()));
    }

    void clipsToTheRoot()
    {
        X11ScreenGrab grabber(m_connection);
        const QImage image = grabber.grab(QRect(3100, 1000, 500, 500));
        QCOMPARE(image.size(), QSize(100, 80));
        QVERIFY(grabber.grab(QRect(4000, 0, 10, 10)).isNull());
        QVERIFY(grabber.grab(QRect()).isNull());
    }

    void anImageOutlivesItsGrabber()
    {
        QImage image;
        {
            X11Connection connection;
            X11ScreenGrab grabber(connection);
            image = grabber.grab(QRect(200, 100, 300, 200));
        }
        QVERIFY(image == DesktopPattern::of(QRect(200, 100, 300, 200)));
    }
};

QTEST_MAIN(TestCaptureScreenGrab)
#include "tst_capture_screengrab.moc"
