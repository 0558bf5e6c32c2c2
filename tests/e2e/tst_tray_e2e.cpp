#include "DesktopProbe.h"
#include "Preferences.h"
#include "StatusMenuImage.h"
#include "VexetProcess.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The real program on the virtual desktop, looked at and clicked from outside.
class TestTrayEndToEnd : public QObject {
    Q_OBJECT

    QTemporaryDir m_configHome;
    DesktopProbe m_probe;

    QString settingsFile() const { return m_configHome.filePath(u"Vexet/Vexet.conf"_s); }

    xcb_window_t waitForTrayIcon(VexetProcess& vexet)
    {
        std::optional<xcb_window_t> icon;
        if (!QTest::qWaitFor([&] { return (icon = m_probe.trayIcon(vexet.pid())).has_value(); }, 30000))
            return XCB_NONE;
        return *icon;
    }

    // The icon drawn by the program must be our viewfinder, pixel for pixel where it is opaque.
    void compareWithRenderedIcon(xcb_window_t trayIcon)
    {
        const QImage shown = m_probe.stableGrab(trayIcon);
        QVERIFY(!shown.isNull());
        const QImage rendered = QIcon(u":/icons/viewfinder.svg"_s)
                                    .pixmap(shown.size())
                                    .toImage()
                                    .convertToFormat(QImage::Format_ARGB32);
        QVERIFY(!rendered.isNull());
        const QPoint offset((shown.width() - rendered.width()) / 2, (shown.height() - rendered.height()) / 2);
        int opaque = 0;
        int different = 0;
        for (int y = 0; y < rendered.height(); ++y) {
            for (int x = 0; x < rendered.width(); ++x) {
                const QRgb want = rendered.pixel(x, y);
                if (qAlpha(want) != 255)
                    continue;
                ++opaque;
                const QRgb got = shown.pixel(x + offset.x(), y + offset.y());
                if (qAbs(qRed(got) - qRed(want)) > 2 || qAbs(qGreen(got) - qGreen(want)) > 2
                    || qAbs(qBlue(got) - qBlue(want)) > 2)
                    ++different;
            }
        }
        QVERIFY2(opaque > rendered.width() * rendered.height() / 5, "the icon has too few opaque pixels");
        QVERIFY2(
            different == 0, qPrintable(u"%1 of %2 opaque icon pixels differ"_s.arg(different).arg(opaque)));
    }

    void clickTrayIconAndCheckTheMenu(VexetProcess& vexet, xcb_window_t trayIcon, int button)
    {
        const QRect iconRect = m_probe.windows().rootGeometry(trayIcon).value_or(QRect());
        QVERIFY(iconRect.isValid());
        m_probe.input().click(iconRect.center(), button);
        QList<xcb_window_t> menus;
        QVERIFY(QTest::qWaitFor([&] { return !(menus = m_probe.popupMenus(vexet.pid())).isEmpty(); }, 20000));
        QCOMPARE(menus.size(), 1);
        // Keep the pointer off the menu, so no item is highlighted.
        m_probe.input().movePointer(QPoint(10, 1000));
        const QImage shown = m_probe.stableGrab(menus.first());

        Preferences preferences(std::make_unique<QSettings>(settingsFile(), QSettings::IniFormat));
        const QImage expected = StatusMenuImage::render(preferences, true);
        QCOMPARE(shown.size(), expected.size());
        QVERIFY2(shown == expected, "the menu on screen is not the status menu with its shortcut labels");
        QVERIFY(StatusMenuImage::render(preferences, false) != shown);

        m_probe.input().click(QPoint(10, 1000), 1); // a click elsewhere closes the menu
        QVERIFY(QTest::qWaitFor([&] { return m_probe.popupMenus(vexet.pid()).isEmpty(); }, 20000));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_probe.isReady(), "needs the virtual desktop (X server with XTest)");
        QVERIFY(QFileInfo(VexetProcess::binary()).isExecutable());
    }

    void theFirstStartShowsTheTrayIconAndOnlyTheWelcome()
    {
        VexetProcess vexet(m_configHome.path());
        QVERIFY(vexet.start());
        const xcb_window_t icon = waitForTrayIcon(vexet);
        QVERIFY2(icon != XCB_NONE, "no tray icon appeared");

        QList<xcb_window_t> windows;
        QVERIFY(QTest::qWaitFor(
            [&] { return !(windows = m_probe.mappedClientWindows(vexet.pid())).isEmpty(); }, 20000));
        QTest::qWait(500);
        windows = m_probe.mappedClientWindows(vexet.pid());
        QCOMPARE(windows.size(), 1);
        QCOMPARE(m_probe.windows().title(windows.first()), u"Vexet’e hoş geldin"_s);
        QCOMPARE(m_probe.windows().rootGeometry(windows.first())->size(), QSize(540, 745));
        QVERIFY(m_probe.popupMenus(vexet.pid()).isEmpty());

        compareWithRenderedIcon(icon);

        int exitCode = -1;
        QVERIFY2(vexet.terminateAndWait(&exitCode), qPrintable(u"exit code %1"_s.arg(exitCode)));
        QSettings stored(settingsFile(), QSettings::IniFormat);
        QCOMPARE(stored.value(u"hasWelcomed"_s).toString(), u"true"_s);
    }

    void theSecondStartShowsNoWindowAndTheTrayOpensTheMenu()
    {
        VexetProcess vexet(m_configHome.path());
        QVERIFY(vexet.start());
        const xcb_window_t icon = waitForTrayIcon(vexet);
        QVERIFY2(icon != XCB_NONE, "no tray icon appeared");
        QTest::qWait(1000);
        QVERIFY(m_probe.mappedClientWindows(vexet.pid()).isEmpty());
        QVERIFY(m_probe.popupMenus(vexet.pid()).isEmpty());
        compareWithRenderedIcon(icon);

        clickTrayIconAndCheckTheMenu(vexet, icon, 1);
        clickTrayIconAndCheckTheMenu(vexet, icon, 3);

        int exitCode = -1;
        QVERIFY2(vexet.terminateAndWait(&exitCode), qPrintable(u"exit code %1"_s.arg(exitCode)));
    }
};

QTEST_MAIN(TestTrayEndToEnd)
#include "tst_tray_e2e.moc"
