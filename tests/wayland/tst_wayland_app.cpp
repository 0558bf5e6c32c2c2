#include "EditorController.h"
#include "PatternDesktop.h"
#include "PrivatePortal.h"
#include "ShortcutsPortalControl.h"
#include "TrayProbe.h"
#include "WaylandInput.h"

#include <QApplication>
#include <QDir>
#include <QJsonArray>
#include <QLabel>
#include <QProcess>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

// The real program on the Wayland test desktop: a native Wayland client with no X server anywhere,
// its tray menu reached through the StatusNotifier watcher, its command line, a shortcut of the
// desktop's GlobalShortcuts portal, the desktop's Screenshot portal, the clipboard as another
// Wayland client reads it, and the Vexet window of a desktop without a tray.
class TestWaylandApp : public QObject {
    Q_OBJECT

    static constexpr int timeoutMs = 30000;
    static inline const QString editorTitle = u"Vexet — Önizleme ve kırpma"_s;

    PatternDesktop m_patterns;
    SwayIpc& m_sway = m_patterns.sway();
    WaylandInput m_input;
    TrayProbe m_tray;
    QTemporaryDir m_configHome;

    static QString vexet() { return qEnvironmentVariable("VEXET_BINARY_DIR") + u"/src/app/vexet"_s; }
    static QRect secondRect() { return QGuiApplication::screens().at(1)->geometry(); }

    // bus: the session bus it is to use, the desktop's when empty.
    std::unique_ptr<QProcess> startVexet(const QStringList& arguments = {}, const QString& bus = {})
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, m_configHome.path());
        if (!bus.isEmpty())
            environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, bus);
        process->setProcessEnvironment(environment);
        process->setProcessChannelMode(QProcess::ForwardedChannels);
        process->start(vexet(), arguments);
        return process->waitForStarted(timeoutMs) ? std::move(process) : nullptr;
    }

    // A later start with a command: handed over to the running Vexet.
    int handOver(const QStringList& arguments)
    {
        const auto process = startVexet(arguments);
        return process && process->waitForFinished(timeoutMs) ? process->exitCode() : -1;
    }

    static bool stop(QProcess& process)
    {
        process.terminate();
        const bool ended = process.waitForFinished(timeoutMs);
        if (!ended || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
            qWarning("vexet: ended %d, status %d, exit code %d", ended, int(process.exitStatus()),
                process.exitCode());
        return ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }

    // The program's windows with this title, once there are `count` of them.
    QList<SwayIpc::Window> waitForWindows(qint64 pid, const QString& title, qsizetype count)
    {
        QList<SwayIpc::Window> found;
        [[maybe_unused]] const bool reached = QTest::qWaitFor(
            [&] {
                found.clear();
                for (const SwayIpc::Window& window : m_sway.windowsOf(pid)) {
                    if (window.title == title && window.visible)
                        found.append(window);
                }
                return found.size() == count;
            },
            timeoutMs);
        return found;
    }

    // The clipboard as another Wayland client reads it.
    static QImage pasted()
    {
        QProcess paste;
        paste.start(u"wl-paste"_s, { u"--no-newline"_s, u"--type"_s, u"image/png"_s });
        if (!paste.waitForFinished(10000) || paste.exitCode() != 0)
            return {};
        return QImage::fromData(paste.readAllStandardOutput(), "PNG").convertToFormat(QImage::Format_RGB32);
    }

    // A screenshot of the second monitor in an editor of the program, and on the clipboard: the
    // command is given with the pointer on the second monitor, and the patterns go once the helper
    // has frozen them, so that the editor is the only window there.
    void checkSecondMonitorCapture(qint64 pid, const std::function<void()>& command)
    {
        QVERIFY(m_patterns.show());
        const QPoint pointer(300, 700);
        // A real motion: the desktop's keyboard focus follows the pointer onto that monitor.
        QVERIFY(m_input.move(secondRect().topLeft() + pointer - QPoint(10, 10)));
        QVERIFY(m_input.move(secondRect().topLeft() + pointer));
        const qsizetype editors = waitForWindows(pid, editorTitle, 0).size();
        // The pattern goes as soon as the helper's overlay takes the keyboard from it, once it has
        // been frozen: the editor then has the monitor to itself.
        DevicePattern* second = m_patterns.window(1);
        QTRY_VERIFY_WITH_TIMEOUT(second->isActive(), timeoutMs);
        const QMetaObject::Connection leaving = connect(second, &QWindow::activeChanged, second, [second] {
            if (!second->isActive())
                second->hide();
        });
        command();
        QTRY_VERIFY_WITH_TIMEOUT(!second->isVisible(), timeoutMs);
        disconnect(leaving);
        m_patterns.hide();
        const QList<SwayIpc::Window> shown = waitForWindows(pid, editorTitle, editors + 1);
        QCOMPARE(shown.size(), editors + 1);
        const SwayIpc::Window& editor = shown.last();
        QCOMPARE(editor.output, u"HEADLESS-2"_s);

        // Its status line, as the same editor here draws it.
        EditorController local(QImage(1280, 1024, QImage::Format_RGB32));
        local.setAttribute(Qt::WA_DontShowOnScreen);
        local.resize(editor.rect.size());
        local.show();
        QCOMPARE(local.statusLabel()->text(), u"1280 × 1024 piksel"_s);
        // As the automatic copy words it; this process's own clipboard is left alone.
        local.statusLabel()->setText(u"1280 × 1024 piksel • Panoya kopyalandı"_s);
        const QImage expected = local.statusLabel()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const QRect label(editor.rect.topLeft() + local.statusLabel()->mapTo(&local, QPoint(0, 0)),
            local.statusLabel()->size());
        QTRY_COMPARE_WITH_TIMEOUT(m_patterns.pictures().region(label), expected, timeoutMs);

        // The copy reached the other programs: exactly the second monitor, but for the pointer.
        QImage copied;
        QVERIFY(QTest::qWaitFor([&] { return (copied = pasted()).size() == QSize(1280, 1024); }, timeoutMs));
        QVERIFY(PatternDesktop::equalBesidesPointer(copied, m_patterns.expected(1), pointer));

        QVERIFY(m_sway.command(u"[con_id=%1] kill"_s.arg(editor.id)));
        QCOMPARE(waitForWindows(pid, editorTitle, editors).size(), editors);
    }

    void checkNothingLeft()
    {
        QVERIFY(!QFile::exists(u"/tmp/out.png"_s));
        QVERIFY(QDir(QDir::home().filePath(u"Pictures"_s)).entryList(QDir::Files).isEmpty());
        QVERIFY(QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).entryList({ u"Vexet-*"_s }).isEmpty());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsEmpty("DISPLAY"), "the Wayland tests run without any X server");
        QVERIFY2(m_input.isReady(), qPrintable(m_input.errorString()));
        QSettings settings(m_configHome.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        // sway binds keys only to commands; that launch alert is another test's subject.
        settings.setValue(u"hasExplainedCommands"_s, true);
        settings.sync();
        QVERIFY(m_sway.restoreOutputScales());
        QVERIFY(m_tray.setHostRegistered(true));
    }

    void cleanupTestCase() { m_tray.setHostRegistered(true); }

    void theTrayMenuAndTheCommandTakeTheMonitorUnderThePointer()
    {
        const auto vexetProcess = startVexet();
        QVERIFY(vexetProcess);
        const qint64 pid = vexetProcess->processId();
        const QString item = m_tray.waitForItem(pid, timeoutMs);
        QVERIFY2(!item.isEmpty(), qPrintable(m_tray.errorString()));

        checkSecondMonitorCapture(pid, [&] {
            QVERIFY2(m_tray.clickMenuEntry(item, u"Ekranı yakala"_s), qPrintable(m_tray.errorString()));
        });
        checkNothingLeft();
        checkSecondMonitorCapture(pid, [&] { QCOMPARE(handOver({ u"--capture"_s, u"screen"_s }), 0); });
        checkNothingLeft();
        QVERIFY(stop(*vexetProcess));
    }

    void aShortcutOfTheDesktopTakesTheMonitorUnderThePointer()
    {
        // A desktop with the GlobalShortcuts portal: the test backend behind the real frontend,
        // sway's own backends for the pictures.
        PrivatePortal portal(PrivatePortal::Shortcuts {});
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        ShortcutsPortalControl control(portal.connection());
        const auto vexetProcess = startVexet({}, portal.busAddress());
        QVERIFY(vexetProcess);
        QVERIFY(QTest::qWaitFor(
            [&] {
                const std::optional<QJsonObject> received = control.received();
                return received && received->value(u"bound"_s).toArray().size() == 4;
            },
            timeoutMs));
        checkSecondMonitorCapture(vexetProcess->processId(),
            [&] { QVERIFY2(control.activate(u"screen"_s), qPrintable(control.errorString())); });
        checkNothingLeft();
        QVERIFY(stop(*vexetProcess));
        // The program's one portal session ends with it.
        QTRY_COMPARE_WITH_TIMEOUT(control.received()->value(u"closedSessions"_s).toInt(), 1, timeoutMs);
    }

    void withoutATrayTheVexetWindowOffersTheCommands()
    {
        QVERIFY(m_tray.setHostRegistered(false));
        const auto vexetProcess = startVexet();
        QVERIFY(vexetProcess);
        const qint64 pid = vexetProcess->processId();
        QList<SwayIpc::Window> windows = waitForWindows(pid, u"Vexet"_s, 1);
        QCOMPARE(windows.size(), 1);

        // Closing it does not quit; starting Vexet again brings it back.
        QVERIFY(m_sway.command(u"[con_id=%1] kill"_s.arg(windows.first().id)));
        QCOMPARE(waitForWindows(pid, u"Vexet"_s, 0).size(), 0);
        QCOMPARE(vexetProcess->state(), QProcess::Running);
        QCOMPARE(handOver({}), 0);
        windows = waitForWindows(pid, u"Vexet"_s, 1);
        QCOMPARE(windows.size(), 1);

        QVERIFY(stop(*vexetProcess));
        QVERIFY(m_tray.setHostRegistered(true));
    }
};

QTEST_MAIN(TestWaylandApp)
#include "tst_wayland_app.moc"
