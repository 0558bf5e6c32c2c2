#include "X11Connection.h"
#include "X11Monitors.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QTest>

using namespace Qt::StringLiterals;

// The monitors of vexet-capture in the order of QGuiApplication::screens(), which is what the
// application counts in when it asks for display n.
class TestCaptureMonitors : public QObject {
    Q_OBJECT

    X11Connection m_connection;

    static bool xrandr(const QStringList& arguments)
    {
        return QProcess::execute(u"xrandr"_s, arguments) == 0;
    }

    void compareWithQt()
    {
        const QList<X11Monitors::Monitor> monitors = X11Monitors(m_connection).list();
        const QList<QScreen*> screens = QGuiApplication::screens();
        QCOMPARE(monitors.size(), screens.size());
        for (qsizetype i = 0; i < screens.size(); ++i) {
            QCOMPARE(monitors.at(i).geometry, screens.at(i)->geometry());
            QCOMPARE(monitors.at(i).name, screens.at(i)->name());
            QCOMPARE(monitors.at(i).primary, screens.at(i) == QGuiApplication::primaryScreen());
        }
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_connection.isOpen(), "needs the virtual desktop");
        QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
        // Qt counts in device pixels here only without scaling; the virtual desktop has none.
        for (QScreen* screen : QGuiApplication::screens())
            QCOMPARE(screen->devicePixelRatio(), 1.0);
    }

    void theVirtualDesktopHasItsTwoMonitorsPrimaryFirst()
    {
        const QList<X11Monitors::Monitor> monitors = X11Monitors(m_connection).list();
        QCOMPARE(monitors.size(), 2);
        QCOMPARE(monitors.at(0).name, u"DUMMY0"_s);
        QCOMPARE(monitors.at(0).geometry, QRect(0, 0, 1920, 1080));
        QVERIFY(monitors.at(0).primary);
        QCOMPARE(monitors.at(1).name, u"DUMMY1"_s);
        QCOMPARE(monitors.at(1).geometry, QRect(1920, 0, 1280, 1024));
        QVERIFY(!monitors.at(1).primary);
    }

    void theOrderIsQtsOrder() { compareWithQt(); }

    void anotherPrimaryComesFirstForQtAndForUs()
    {
        QVERIFY(xrandr({ u"--output"_s, u"DUMMY1"_s, u"--primary"_s }));
        const bool moved
            = QTest::qWaitFor([] { return QGuiApplication::primaryScreen()->name() == u"DUMMY1"_s; }, 20000);
        const QList<X11Monitors::Monitor> monitors = X11Monitors(m_connection).list();
        const QStringList qtOrder = [] {
            QStringList names;
            for (QScreen* screen : QGuiApplication::screens())
                names.append(screen->name());
            return names;
        }();
        QVERIFY(xrandr({ u"--output"_s, u"DUMMY0"_s, u"--primary"_s }));
        QVERIFY(moved);
        QCOMPARE(monitors.size(), 2);
        QCOMPARE(monitors.at(0).name, u"DUMMY1"_s);
        QCOMPARE(monitors.at(1).name, u"DUMMY0"_s);
        QCOMPARE(qtOrder, (QStringList { u"DUMMY1"_s, u"DUMMY0"_s }));

        QVERIFY(
            QTest::qWaitFor([] { return QGuiApplication::primaryScreen()->name() == u"DUMMY0"_s; }, 20000));
        compareWithQt();
    }
};

QTEST_MAIN(TestCaptureMonitors)
#include "tst_capture_monitors.moc"
