#include "CaptureDesktop.h"
#include "CaptureProcess.h"
#include "PatternWindow.h"

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
constexpr quint32 escapeKeysym = 0xff1b;
constexpr QRgb blue = 0xff2040c0;
constexpr QRgb red = 0xffc03020;
constexpr QRgb green = 0xff30a050;
} // namespace

// vexet-capture -i -w -o on the virtual desktop: windows of this test, managed by openbox.
class TestCaptureWindow : public QObject {
    Q_OBJECT

    struct Shown {
        std::unique_ptr<PatternWindow> window;
        QRect frame;
        QRect client;
        QImage pixels;
    };

    CaptureDesktop m_desktop;
    // lower and upper overlap on the first monitor; other is on the second monitor.
    Shown m_lower;
    Shown m_upper;
    Shown m_other;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<CaptureProcess> m_tool;

    QString path() const { return m_dir->filePath(u"capture.png"_s); }

    QStringList entries() const
    {
        return QDir(m_dir->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    void show(Shown& shown, const QRect& place, QRgb colour, const QString& title)
    {
        shown.window.reset(PatternWindow::managed(place, colour, title));
        shown.window->show();
        const xcb_window_t id = static_cast<xcb_window_t>(shown.window->winId());
        QVERIFY(QTest::qWaitFor(
            [&] { return m_desktop.clientsOf(QCoreApplication::applicationPid()).contains(id); }, 20000));
        QVERIFY(QTest::qWaitFor(
            [&] {
                const std::optional<QRect> client = m_desktop.windows().rootGeometry(id);
                return client && m_desktop.windows().grab(*client) == shown.window->contents();
            },
            20000));
        shown.client = *m_desktop.windows().rootGeometry(id);
        shown.frame = m_desktop.frameOf(id).value_or(QRect());
        // openbox decorates: the frame is larger than the client on every side but the bottom
        // edge may be thin; it holds the client.
        QVERIFY(shown.frame.contains(shown.client));
        QVERIFY(shown.frame.height() > shown.client.height());
    }

    void startPicking()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_tool = std::make_unique<CaptureProcess>(
            QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-w"_s, u"-o"_s, path() });
        QVERIFY(m_tool->start());
        QVERIFY2(m_desktop.waitForPointerHeldElsewhere(), "vexet-capture did not take the pointer");
    }

    void expectPicture(const Shown& shown)
    {
        QVERIFY2(m_tool->waitForExit(), "vexet-capture did not finish");
        QCOMPARE(m_tool->exitCode(), 0);
        QVERIFY(m_tool->standardError().isEmpty());
        QCOMPARE(entries(), QStringList { u"capture.png"_s });
        const QImage image = QImage(path()).convertToFormat(QImage::Format_RGB32);
        // The whole frame and nothing else: the window manager's decorations and the client.
        QCOMPARE(image.size(), shown.frame.size());
        QVERIFY(image == shown.pixels);
        // Its client shows in it, except where another window lies over it.
        int clientPixels = 0;
        for (int y = shown.client.top(); y <= shown.client.bottom(); ++y) {
            for (int x = shown.client.left(); x <= shown.client.right(); ++x) {
                if (&shown == &m_lower && m_upper.frame.contains(x, y))
                    continue;
                ++clientPixels;
                const QPoint inImage = QPoint(x, y) - shown.frame.topLeft();
                const QPoint inClient = QPoint(x, y) - shown.client.topLeft();
                if (image.pixel(inImage) != shown.window->contents().pixel(inClient))
                    QFAIL(qPrintable(u"the client's pixel %1,%2 is not in the picture"_s.arg(x).arg(y)));
            }
        }
        QVERIFY(clientPixels > shown.client.width() * shown.client.height() / 2);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_desktop.isReady(), "needs the virtual desktop (X server with XTest)");
        show(m_lower, QRect(200, 200, 500, 400), blue, u"alt pencere"_s);
        show(m_other, QRect(2300, 300, 400, 300), green, u"ikinci ekrandaki pencere"_s);
        show(m_upper, QRect(500, 400, 500, 400), red, u"üst pencere"_s);
        // Bottom to top as the window manager stacks them.
        const QList<xcb_window_t> stacking = m_desktop.clientsOf(QCoreApplication::applicationPid());
        QCOMPARE(stacking.size(), 3);
        QCOMPARE(stacking.last(), static_cast<xcb_window_t>(m_upper.window->winId()));
        QVERIFY(m_lower.frame.intersects(m_upper.frame));
        // What the frames show, with the upper one over the lower one.
        for (Shown* shown : { &m_lower, &m_upper, &m_other }) {
            shown->pixels = m_desktop.stableGrab(shown->frame);
            QVERIFY(!shown->pixels.isNull());
        }
    }

    void cleanup()
    {
        m_tool.reset();
        m_dir.reset();
    }

    void aClickTakesTheTopmostWindowUnderThePointer()
    {
        startPicking();
        // Where the two overlap, the upper one.
        m_desktop.input().click(m_lower.frame.intersected(m_upper.frame).center());
        expectPicture(m_upper);
    }

    void theLowerWindowWhereItShows()
    {
        startPicking();
        m_desktop.input().click(m_lower.client.topLeft() + QPoint(20, 20));
        expectPicture(m_lower);
    }

    void aWindowOnTheSecondMonitor()
    {
        startPicking();
        m_desktop.input().click(m_other.client.center());
        expectPicture(m_other);
    }

    void theWindowUnderThePointerIsLitAndTheRestDimmed()
    {
        startPicking();
        m_desktop.input().movePointer(m_upper.client.center());
        m_desktop.input().pause(50);
        m_desktop.input().movePointer(m_upper.client.center() + QPoint(5, 5));
        // The overlay shows the upper frame as it is and the rest of the lower one darker.
        QVERIFY(m_desktop.waitForPixels(m_upper.frame, m_upper.pixels));
        const QRect lowerOnly(m_lower.frame.topLeft(), QSize(50, 50));
        const QImage dimmed = m_desktop.windows().grab(lowerOnly);
        const QImage lit = m_lower.pixels.copy(QRect(QPoint(0, 0), lowerOnly.size()));
        QCOMPARE(dimmed.size(), lit.size());
        QVERIFY(qGray(dimmed.pixel(25, 40)) < qGray(lit.pixel(25, 40)));
        m_desktop.tapKey(escapeKeysym);
        QVERIFY(m_tool->waitForExit());
        QCOMPARE(m_tool->exitCode(), 1);
    }

    void aClickOnTheBareDesktopKeepsWaiting()
    {
        startPicking();
        m_desktop.input().click(QPoint(1500, 900));
        m_desktop.input().click(QPoint(2500, 900));
        QTest::qWait(800);
        QVERIFY(m_tool->isRunning());
        QVERIFY(entries().isEmpty());
        m_desktop.input().click(m_upper.client.bottomRight() - QPoint(10, 10));
        expectPicture(m_upper);
    }

    void escapeCancels()
    {
        startPicking();
        m_desktop.input().movePointer(m_upper.client.center());
        m_desktop.tapKey(escapeKeysym);
        QVERIFY(m_tool->waitForExit());
        QCOMPARE(m_tool->exitCode(), 1);
        QVERIFY(m_tool->standardError().isEmpty());
        QVERIFY(entries().isEmpty());
        QVERIFY(!m_desktop.pointerHeldElsewhere());
    }

    void aRightClickCancels()
    {
        startPicking();
        m_desktop.input().click(m_lower.client.center(), 3);
        QVERIFY(m_tool->waitForExit());
        QCOMPARE(m_tool->exitCode(), 1);
        QVERIFY(entries().isEmpty());
    }

    void aWindowPartlyOffTheDesktopIsClipped()
    {
        m_lower.window->setPosition(QPoint(-150, 500));
        const xcb_window_t id = static_cast<xcb_window_t>(m_lower.window->winId());
        QVERIFY(QTest::qWaitFor([&] { return m_desktop.frameOf(id).value_or(QRect()).x() < 0; }, 20000));
        const QRect frame = *m_desktop.frameOf(id);
        const QRect visible = frame & m_desktop.rootRect();
        QVERIFY(visible.width() < frame.width());
        const QImage pixels = m_desktop.stableGrab(visible);
        startPicking();
        m_desktop.input().click(visible.center());
        QVERIFY(m_tool->waitForExit());
        QCOMPARE(m_tool->exitCode(), 0);
        const QImage image = QImage(path()).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), visible.size());
        QVERIFY(image == pixels);
    }
};

QTEST_MAIN(TestCaptureWindow)
#include "tst_capture_window.moc"
