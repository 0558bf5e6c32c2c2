#include "Beeper.h"
#include "RegionSelectionWindow.h"
#include "RegionSelector.h"
#include "X11Connection.h"
#include "X11Input.h"
#include "X11Windows.h"

#include <QApplication>
#include <QScreen>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

// The recording overlay on the second monitor (the one that does not start at 0,0), dragged with a
// real pointer.
class TestRegionOverlay : public QObject {
    Q_OBJECT

    X11Connection m_connection;
    X11Input m_input { m_connection };
    X11Windows m_windows { m_connection };
    std::unique_ptr<QWidget> m_backdrop;
    std::unique_ptr<RegionSelector> m_overlay;
    QList<std::optional<QRect>> m_delivered;
    QScreen* m_screen = nullptr;
    const QColor m_colour { 200, 100, 50 };

    QPoint onScreen(int x, int y) const { return m_screen->geometry().topLeft() + QPoint(x, y); }

    // With the button still held at the end.
    void dragHeld(const QPoint& from, const QPoint& to)
    {
        m_input.movePointer(from);
        m_input.pause(30);
        m_input.pressButton(1);
        for (int step = 1; step <= 5; ++step) {
            m_input.pause(20);
            m_input.movePointer(from + (to - from) * step / 5);
        }
    }

    void drag(const QPoint& from, const QPoint& to)
    {
        dragHeld(from, to);
        m_input.pause(30);
        m_input.releaseButton(1);
        QTest::qWait(300);
    }

    RegionSelectionWindow* window() const { return m_overlay->window(0); }

    QRgb shown(const QPoint& point) { return m_windows.grab(QRect(point, QSize(1, 1))).pixel(0, 0); }

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::screens().size(), 2);
        m_screen = QGuiApplication::screens().at(1);
        QVERIFY(m_screen->geometry().topLeft() != QPoint(0, 0));
        // Something known on that monitor, to be seen dimmed through the overlay.
        m_backdrop = std::make_unique<QWidget>(nullptr, Qt::FramelessWindowHint);
        QPalette palette;
        palette.setColor(QPalette::Window, m_colour);
        m_backdrop->setPalette(palette);
        m_backdrop->setAutoFillBackground(true);
        m_backdrop->winId();
        m_backdrop->windowHandle()->setScreen(m_screen);
        m_backdrop->setGeometry(m_screen->geometry());
        m_backdrop->showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(m_backdrop.get()));
        QTRY_COMPARE(shown(onScreen(640, 512)), m_colour.rgb());
    }

    void init()
    {
        m_delivered.clear();
        const RegionSelector::Sheet sheet
            = RegionSelector::monitorSheet(m_screen, m_screen->grabWindow(0).toImage());
        m_overlay = std::make_unique<RegionSelector>(
            QList<RegionSelector::Sheet> { sheet }, RegionSelectionLook::recording(), 16);
        connect(m_overlay.get(), &RegionSelector::finished, this,
            [this](qsizetype index, std::optional<QRect> rect) {
                QCOMPARE(index, rect ? 0 : -1);
                m_delivered.append(rect);
            });
        connect(m_overlay.get(), &RegionSelector::refused, this, [] { Beeper::beep(); });
        m_overlay->present();
        QVERIFY(QTest::qWaitForWindowActive(window()));
        QTRY_COMPARE(m_windows.rootGeometry(static_cast<xcb_window_t>(window()->winId())),
            std::optional<QRect>(m_screen->geometry()));
    }

    void cleanup() { m_overlay.reset(); }

    void theOverlayCoversItsMonitorDimmedAndDeliversTheDraggedRectangle()
    {
        QCOMPARE(window()->cursor().shape(), Qt::CrossCursor);
        QCOMPARE(
            RegionSelectionLook::recording().hint, u"Kaydedilecek alanı sürükleyerek seç • Esc: iptal"_s);
        // While dragging: inside the selection the monitor shows as it is; outside it is dimmed
        // by 0.38; the outline is white.
        dragHeld(onScreen(100, 50), onScreen(300, 250));
        QTRY_COMPARE(shown(onScreen(200, 150)), m_colour.rgb());
        const QColor outside = QColor::fromRgb(shown(onScreen(640, 700)));
        QVERIFY(qAbs(outside.red() - 124) <= 1 && qAbs(outside.green() - 62) <= 1
            && qAbs(outside.blue() - 31) <= 1);
        QCOMPARE(shown(onScreen(100, 150)), QColor(Qt::white).rgb());
        QVERIFY(m_delivered.isEmpty());
        m_input.releaseButton(1);
        QTRY_COMPARE(m_delivered, (QList<std::optional<QRect>> { QRect(100, 50, 200, 200) }));
        // Then the overlay is gone at once.
        QTRY_VERIFY(!window()->isVisible());
        QTRY_COMPARE(shown(onScreen(640, 700)), m_colour.rgb());

        // A second release or Escape after the delivery does nothing.
        m_input.click(onScreen(500, 500));
        QVERIFY(m_input.typeCombination({ XK_Escape }));
        QTest::qWait(200);
        QCOMPARE(m_delivered.size(), 1);
    }

    void aClickWithoutDragAndA15PointDragOnlyBeep()
    {
        const int beeps = Beeper::count();
        m_input.click(onScreen(400, 400));
        QTRY_COMPARE(Beeper::count(), beeps + 1);
        drag(onScreen(400, 400), onScreen(415, 600));
        QTRY_COMPARE(Beeper::count(), beeps + 2);
        QVERIFY(m_delivered.isEmpty());
        QVERIFY(window()->isVisible());
        drag(onScreen(400, 400), onScreen(416, 416));
        QCOMPARE(m_delivered, (QList<std::optional<QRect>> { QRect(400, 400, 16, 16) }));
    }

    void dragsStopAtTheMonitorsEdges()
    {
        // Into the monitor on its left: the rectangle stops at this monitor's left edge.
        drag(onScreen(30, 100), onScreen(-120, 300));
        QCOMPARE(m_delivered, (QList<std::optional<QRect>> { QRect(0, 100, 30, 200) }));
        // Towards the bottom (the X server itself keeps the pointer on the monitors): never beyond.
        cleanup();
        init();
        drag(onScreen(1200, 980), onScreen(1300, 1070));
        QCOMPARE(m_delivered.size(), 1);
        QVERIFY(m_delivered.last().has_value());
        QCOMPARE(m_delivered.last()->topLeft(), QPoint(1200, 980));
        QVERIFY(QRect(QPoint(0, 0), m_screen->size()).contains(*m_delivered.last()));
        QVERIFY(m_delivered.last()->right() >= 1270);
    }

    void escapeBeforeAnyDragDeliversNothing()
    {
        QVERIFY(m_input.typeCombination({ XK_Return }));
        QTest::qWait(100);
        QVERIFY(m_delivered.isEmpty()); // other keys are ignored
        QVERIFY(m_input.typeCombination({ XK_Escape }));
        QTRY_COMPARE(m_delivered.size(), 1);
        QCOMPARE(m_delivered.first(), std::nullopt);
        QVERIFY(m_input.typeCombination({ XK_Escape }));
        QTest::qWait(200);
        QCOMPARE(m_delivered.size(), 1);
    }
};

QTEST_MAIN(TestRegionOverlay)
#include "tst_regionoverlay.moc"
