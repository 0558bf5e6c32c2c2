#include "CompositorPictures.h"
#include "PatternWindow.h"
#include "ScreenshotPortal.h"
#include "SwayIpc.h"
#include "TrayProbe.h"
#include "WaylandInput.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

// The Wayland test desktop itself, as the end-to-end tests rely on it: its outputs, pictures,
// input, tray and Screenshot portal, seen from a native Wayland client.
class TestWaylandDesktop : public QObject {
    Q_OBJECT

    static constexpr int timeoutMs = 30000;
    static inline const QRect firstRect { 0, 0, 1920, 1080 };
    static inline const QRect secondRect { 1920, 0, 1280, 1024 };

    SwayIpc m_sway;
    CompositorPictures m_pictures;
    int m_hostUnregistered = 0;
    int m_hostRegistered = 0;

    static QScreen* screenNamed(const QString& name)
    {
        for (QScreen* screen : QGuiApplication::screens()) {
            if (screen->name() == name)
                return screen;
        }
        return nullptr;
    }

    // A full-screen pattern window on the output, once sway shows it there.
    std::unique_ptr<PatternWindow> showFullScreen(const QString& output, QColor base)
    {
        QScreen* screen = screenNamed(output);
        if (!screen)
            return nullptr;
        auto window = std::make_unique<PatternWindow>(base);
        const QString title = u"pattern on %1"_s.arg(output);
        window->setTitle(title);
        window->setScreen(screen);
        window->setGeometry(screen->geometry());
        window->showFullScreen();
        const std::optional<SwayIpc::Window> shown
            = m_sway.waitForWindow(QCoreApplication::applicationPid(), title, timeoutMs);
        if (!shown)
            return nullptr;
        const QRect outputRect = screen->geometry();
        const auto placed = [&](const SwayIpc::Window& w) {
            return w.fullscreen && w.output == output && w.rect == outputRect;
        };
        if (!m_sway.waitForWindowState(shown->id, placed, timeoutMs))
            return nullptr;
        return window;
    }

    // Sockets that a process listens on, by path, from /proc/net/unix and its descriptors.
    static QStringList unixSocketsOf(qint64 pid)
    {
        QHash<QString, QString> pathByInode;
        QFile table(u"/proc/net/unix"_s);
        if (table.open(QIODevice::ReadOnly)) {
            for (const QByteArray& line : table.readAll().split('\n')) {
                const QList<QByteArray> fields = line.simplified().split(' ');
                if (fields.size() >= 8)
                    pathByInode.insert(QString::fromLatin1(fields.at(6)), QString::fromLatin1(fields.at(7)));
            }
        }
        QStringList paths;
        const QDir fds(u"/proc/%1/fd"_s.arg(pid));
        for (const QString& fd : fds.entryList(QDir::System | QDir::NoDotAndDotDot)) {
            static const QRegularExpression socket(u"^socket:\\[(\\d+)\\]$"_s);
            const QRegularExpressionMatch match
                = socket.match(QFile::symLinkTarget(fds.filePath(fd)).section(u'/', -1));
            if (match.hasMatch() && pathByInode.contains(match.captured(1)))
                paths.append(pathByInode.value(match.captured(1)));
        }
        return paths;
    }

public Q_SLOTS:
    // Receivers of D-Bus signals (public: QtTest runs the private slots as tests).
    void hostRegistered() { ++m_hostRegistered; }
    void hostUnregistered() { ++m_hostUnregistered; }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(
            !qEnvironmentVariableIsEmpty("SWAYSOCK") && !qEnvironmentVariableIsEmpty("VEXET_VNC_SOCKETS"),
            "not on the Wayland test desktop: run it inside tests/desktop/wayland-desktop.sh");
        QCOMPARE(QGuiApplication::platformName(), u"wayland"_s);
    }

    // A failed test must not leave a scaled output to the next ones.
    void cleanup() { QVERIFY2(m_sway.restoreOutputScales(), qPrintable(m_sway.errorString())); }

    void noXServer()
    {
        QVERIFY(qEnvironmentVariableIsEmpty("DISPLAY"));
        QVERIFY(qEnvironmentVariableIsEmpty("XAUTHORITY"));
        // sway's IPC socket is named after its process; with Xwayland it would also listen on an
        // X11 socket.
        const QRegularExpressionMatch match = QRegularExpression(u"sway-ipc\\.\\d+\\.(\\d+)\\.sock$"_s)
                                                  .match(qEnvironmentVariable("SWAYSOCK"));
        QVERIFY(match.hasMatch());
        const QStringList sockets = unixSocketsOf(match.captured(1).toLongLong());
        QVERIFY2(sockets.contains(qEnvironmentVariable("SWAYSOCK")), qPrintable(sockets.join(u", "_s)));
        QVERIFY2(sockets.filter(u".X11-unix"_s).isEmpty(), qPrintable(sockets.join(u", "_s)));
    }

    void outputsAsQtAndSwaySeeThem()
    {
        const QList<SwayIpc::Output> outputs = m_sway.outputs();
        QCOMPARE(outputs.size(), 2);
        QCOMPARE(outputs.at(0).name, u"HEADLESS-1"_s);
        QCOMPARE(outputs.at(0).rect, firstRect);
        QCOMPARE(outputs.at(0).scale, 1.0);
        QCOMPARE(outputs.at(1).name, u"HEADLESS-2"_s);
        QCOMPARE(outputs.at(1).rect, secondRect);
        QCOMPARE(outputs.at(1).modeSize, QSize(1280, 1024));

        QCOMPARE(QGuiApplication::screens().size(), 2);
        QScreen* first = screenNamed(u"HEADLESS-1"_s);
        QScreen* second = screenNamed(u"HEADLESS-2"_s);
        QVERIFY(first && second);
        QCOMPARE(first->geometry(), firstRect);
        QCOMPARE(second->geometry(), secondRect);
        QCOMPARE(first->devicePixelRatio(), 1.0);
        QCOMPARE(second->devicePixelRatio(), 1.0);
    }

    void fullScreenPatternsArePicturedExactly()
    {
        const auto first = showFullScreen(u"HEADLESS-1"_s, QColor(200, 30, 60));
        QVERIFY2(first, qPrintable(m_sway.errorString()));
        const auto second = showFullScreen(u"HEADLESS-2"_s, QColor(20, 120, 220));
        QVERIFY2(second, qPrintable(m_sway.errorString()));
        // The pointer is drawn into the pictures: each output is looked at while it is on the other.
        QVERIFY2(m_sway.parkPointer(secondRect.bottomRight() - QPoint(100, 100)),
            qPrintable(m_sway.errorString()));
        const QString firstDiffers
            = m_pictures.waitForOutput(u"HEADLESS-1"_s, first->expected(firstRect.size()), timeoutMs);
        QVERIFY2(firstDiffers.isEmpty(), qPrintable(firstDiffers));
        QVERIFY2(
            m_sway.parkPointer(firstRect.bottomRight() - QPoint(100, 100)), qPrintable(m_sway.errorString()));
        const QString secondDiffers
            = m_pictures.waitForOutput(u"HEADLESS-2"_s, second->expected(secondRect.size()), timeoutMs);
        QVERIFY2(secondDiffers.isEmpty(), qPrintable(secondDiffers));

        // Two pictures in a row agree, and a rectangle is cut where asked.
        const QRect inside(secondRect.topLeft() + QPoint(64, 40), QSize(300, 200));
        const QImage region = m_pictures.stableRegion(inside, timeoutMs);
        QVERIFY2(!region.isNull(), qPrintable(m_pictures.errorString()));
        QCOMPARE(region, second->expected(secondRect.size()).copy(inside.translated(-secondRect.topLeft())));
    }

    void dragAndKeyOnTheSecondOutput()
    {
        WaylandInput input;
        QVERIFY2(input.isReady(), qPrintable(input.errorString()));
        QCOMPARE(input.outputs(), QStringList({ u"HEADLESS-1"_s, u"HEADLESS-2"_s }));
        const auto window = showFullScreen(u"HEADLESS-2"_s, QColor(90, 160, 40));
        QVERIFY2(window, qPrintable(m_sway.errorString()));
        // sway's tree gives the new layout before the program has drawn itself there; only
        // once the picture shows the window does input reach it.
        QVERIFY2(m_sway.parkPointer(firstRect.center()), qPrintable(m_sway.errorString()));
        const QString differs
            = m_pictures.waitForOutput(u"HEADLESS-2"_s, window->expected(secondRect.size()), timeoutMs);
        QVERIFY2(differs.isEmpty(), qPrintable(differs));

        const QPoint from(100, 100);
        const QPoint to(600, 400);
        window->clearEvents();
        QVERIFY2(input.drag(secondRect.topLeft() + from, secondRect.topLeft() + to, 10),
            qPrintable(input.errorString()));
        const auto released = [&] {
            return !window->events().isEmpty()
                && window->events().constLast().type == QEvent::MouseButtonRelease;
        };
        QTRY_VERIFY2_WITH_TIMEOUT(released(), qPrintable(window->describeEvents()), timeoutMs);

        const QList<PatternWindow::Event>& events = window->events();
        const auto press = std::find_if(events.cbegin(), events.cend(),
            [](const PatternWindow::Event& e) { return e.type == QEvent::MouseButtonPress; });
        QVERIFY(press != events.cend());
        QCOMPARE(press->position, from);
        QCOMPARE(press->buttons, Qt::MouseButtons(Qt::LeftButton));
        int heldMoves = 0;
        for (auto it = press + 1; it != events.cend() - 1; ++it) {
            QCOMPARE(it->type, QEvent::MouseMove);
            QCOMPARE(it->buttons, Qt::MouseButtons(Qt::LeftButton));
            // On the line from `from` to `to`, between them.
            const QPoint p = it->position;
            QVERIFY2(p.x() > from.x() && p.x() <= to.x()
                    && qAbs((p.x() - from.x()) * 3 - (p.y() - from.y()) * 5) <= 8,
                qPrintable(u"motion at %1,%2"_s.arg(p.x()).arg(p.y())));
            ++heldMoves;
        }
        QVERIFY2(heldMoves >= 1, "no motion arrived while the button was held");
        QCOMPARE(events.constLast().position, to);
        QCOMPARE(events.constLast().buttons, Qt::MouseButtons(Qt::NoButton));

        // The window under the pointer has the keyboard (sway's focus follows the mouse).
        const std::optional<SwayIpc::Window> shown
            = m_sway.waitForWindow(QCoreApplication::applicationPid(), window->title(), timeoutMs);
        QVERIFY(shown);
        QVERIFY2(m_sway.waitForWindowState(
                     shown->id, [](const SwayIpc::Window& w) { return w.focused; }, timeoutMs),
            qPrintable(m_sway.errorString()));
        window->clearEvents();
        QVERIFY2(input.keyClick(WaylandInput::Escape), qPrintable(input.errorString()));
        const auto escaped = [&] {
            return std::any_of(
                window->events().cbegin(), window->events().cend(), [](const PatternWindow::Event& e) {
                    return e.type == QEvent::KeyPress && e.key == Qt::Key_Escape;
                });
        };
        QTRY_VERIFY2_WITH_TIMEOUT(escaped(), qPrintable(window->describeEvents()), timeoutMs);
    }

    void scaleTwoOnTheSecondOutput()
    {
        QScreen* screen = screenNamed(u"HEADLESS-2"_s);
        QVERIFY(screen);
        QVERIFY2(m_sway.setOutputScale(u"HEADLESS-2"_s, 2.0), qPrintable(m_sway.errorString()));
        const QRect logical(1920, 0, 640, 512);
        QTRY_VERIFY_WITH_TIMEOUT(
            screen->devicePixelRatio() == 2.0 && screen->geometry() == logical, timeoutMs);

        // The pattern is drawn in 2 x 2 device pixel blocks; clicks in logical coordinates land
        // where they are aimed.
        const auto window = showFullScreen(u"HEADLESS-2"_s, QColor(240, 200, 10));
        QVERIFY2(window, qPrintable(m_sway.errorString()));
        QVERIFY2(m_sway.parkPointer(firstRect.center()), qPrintable(m_sway.errorString()));
        const QString differs = m_pictures.waitForOutput(
            u"HEADLESS-2"_s, window->expected(logical.size()).scaled(1280, 1024), timeoutMs);
        QVERIFY2(differs.isEmpty(), qPrintable(differs));
        WaylandInput input;
        QVERIFY2(input.isReady(), qPrintable(input.errorString()));
        window->clearEvents();
        QVERIFY2(input.click(logical.topLeft() + QPoint(301, 203)), qPrintable(input.errorString()));
        QTRY_VERIFY2_WITH_TIMEOUT(
            !window->events().isEmpty() && window->events().constLast().type == QEvent::MouseButtonRelease,
            qPrintable(window->describeEvents()), timeoutMs);
        QCOMPARE(window->events().constLast().position, QPoint(301, 203));

        QVERIFY2(m_sway.restoreOutputScales(), qPrintable(m_sway.errorString()));
        QTRY_VERIFY_WITH_TIMEOUT(
            screen->devicePixelRatio() == 1.0 && screen->geometry() == secondRect, timeoutMs);
    }

    void trayIconMenuThroughDbusmenu()
    {
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());
        QPixmap pixmap(22, 22);
        pixmap.fill(Qt::darkCyan);
        QMenu menu;
        menu.addAction(u"Birinci"_s);
        QAction* second = menu.addAction(u"&İkinci"_s);
        menu.addAction(u"Kapalı"_s)->setEnabled(false);
        menu.addSeparator();
        QSystemTrayIcon icon { QIcon(pixmap) };
        icon.setContextMenu(&menu);
        icon.show();

        TrayProbe tray;
        const QString item = tray.waitForItem(QCoreApplication::applicationPid(), timeoutMs);
        QVERIFY2(!item.isEmpty(), qPrintable(tray.errorString()));
        const std::optional<QList<TrayProbe::MenuEntry>> entries = tray.menu(item);
        QVERIFY2(entries, qPrintable(tray.errorString()));
        QStringList labels;
        for (const TrayProbe::MenuEntry& entry : *entries)
            labels.append(entry.separator ? u"-"_s : entry.label + (entry.enabled ? u""_s : u" (off)"_s));
        QCOMPARE(labels, QStringList({ u"Birinci"_s, u"İkinci"_s, u"Kapalı (off)"_s, u"-"_s }));

        QSignalSpy triggered(second, &QAction::triggered);
        QVERIFY2(tray.clickMenuEntry(item, u"İkinci"_s), qPrintable(tray.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(triggered.size(), 1, timeoutMs);
        QVERIFY(!tray.clickMenuEntry(item, u"Kapalı"_s));
        QVERIFY(!tray.clickMenuEntry(item, u"Üçüncü"_s));

        // An item whose program leaves goes from the watcher's list.
        icon.hide();
        QTRY_VERIFY_WITH_TIMEOUT(!tray.items().contains(item), timeoutMs);
    }

    void trayHostCanBeSwitchedOff()
    {
        TrayProbe tray;
        QDBusConnection bus = QDBusConnection::sessionBus();
        const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
        QVERIFY(bus.connect(watcher, u"/StatusNotifierWatcher"_s, watcher,
            u"StatusNotifierHostUnregistered"_s, this, SLOT(hostUnregistered())));
        QVERIFY(bus.connect(watcher, u"/StatusNotifierWatcher"_s, watcher, u"StatusNotifierHostRegistered"_s,
            this, SLOT(hostRegistered())));
        QCOMPARE(tray.isHostRegistered(), std::optional<bool>(true));
        // Qt decides once per process whether the desktop has a D-Bus tray at all, at the first
        // question; only when that answer was yes do later questions follow the watcher.
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());

        QVERIFY2(tray.setHostRegistered(false), qPrintable(tray.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(m_hostUnregistered, 1, timeoutMs);
        QCOMPARE(tray.isHostRegistered(), std::optional<bool>(false));
        QVERIFY(!QSystemTrayIcon::isSystemTrayAvailable());

        QVERIFY2(tray.setHostRegistered(true), qPrintable(tray.errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(m_hostRegistered, 1, timeoutMs);
        QVERIFY(QSystemTrayIcon::isSystemTrayAvailable());
        QCOMPARE(m_hostUnregistered, 1);
    }

    void portalScreenshotOfTheWholeDesktop()
    {
        ScreenshotPortal portal;
        const std::optional<ScreenshotPortal::Answer> answer = portal.screenshot(false, timeoutMs);
        QVERIFY2(answer, qPrintable(portal.errorString()));
        QCOMPARE(answer->code, 0u);
        QVERIFY2(answer->uri().startsWith(u"file:///"_s), qPrintable(answer->uri()));
        QCOMPARE(ScreenshotPortal::takePicture(*answer).size(), QSize(3200, 1080));
    }

    void portalInteractiveScreenshotAsksTheRegionPicker()
    {
        QFile answerFile(qEnvironmentVariable("VEXET_SLURP_ANSWER"));
        QVERIFY(answerFile.open(QIODevice::WriteOnly | QIODevice::Truncate));
        answerFile.write("1920,0 1280x1024\n");
        answerFile.close();
        ScreenshotPortal portal;
        std::optional<ScreenshotPortal::Answer> answer = portal.screenshot(true, timeoutMs);
        QVERIFY2(answer, qPrintable(portal.errorString()));
        QCOMPARE(answer->code, 0u);
        QCOMPARE(ScreenshotPortal::takePicture(*answer).size(), QSize(1280, 1024));

        // A cancelled picker: no picture.
        QVERIFY(answerFile.open(QIODevice::WriteOnly | QIODevice::Truncate));
        answerFile.write("cancel\n");
        answerFile.close();
        answer = portal.screenshot(true, timeoutMs);
        QVERIFY2(answer, qPrintable(portal.errorString()));
        QVERIFY(answer->code != 0);
        QVERIFY(answer->uri().isEmpty());
        QVERIFY(answerFile.remove());
    }
};

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    TestWaylandDesktop test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_wayland_desktop.moc"
