#include "CommandLine.h"
#include "DesktopProbe.h"
#include "EditorController.h"
#include "VexetProcess.h"

#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The command line of the real program on the virtual desktop: commands handed to the running
// Vexet through its socket, a command that starts Vexet, and the answers that need no display.
class TestCommandsEndToEnd : public QObject {
    Q_OBJECT

    struct Finished {
        bool ended = false;
        int exitCode = -1;
        QString standardOutput;
        QString standardError;
    };

    DesktopProbe m_probe;
    QTemporaryDir m_configHome;
    const QString m_editorTitle = u"Vexet — Önizleme ve kırpma"_s;
    const QString m_settingsTitle = u"Vexet — Ayarlar"_s;

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, m_configHome.path());
        return environment;
    }

    static Finished run(const QStringList& arguments, const QProcessEnvironment& environment)
    {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(VexetProcess::binary(), arguments);
        Finished finished;
        finished.ended = process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit;
        finished.exitCode = process.exitCode();
        finished.standardOutput = QString::fromUtf8(process.readAllStandardOutput());
        finished.standardError = QString::fromUtf8(process.readAllStandardError());
        return finished;
    }

    // The editor's status line on screen reads "1280 × 1024 piksel": its pixels are those of the
    // same label in an editor of the same size here.
    void checkStatusLineOfSecondMonitorCapture(xcb_window_t editorWindow)
    {
        const QRect second = QGuiApplication::screens().at(1)->geometry();
        EditorController local(QImage(second.size(), QImage::Format_RGB32));
        local.resize(m_probe.windows().rootGeometry(editorWindow)->size());
        local.show();
        QVERIFY(QTest::qWaitForWindowExposed(&local));
        QCOMPARE(local.statusLabel()->text(), u"1280 × 1024 piksel"_s);
        const QRect labelRect(local.statusLabel()->mapTo(&local, QPoint(0, 0)), local.statusLabel()->size());
        const QImage expected = local.statusLabel()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        // Out of the way first: the window manager may have put it right over the other one.
        const auto localWindow = static_cast<xcb_window_t>(local.winId());
        local.hide();
        QTRY_VERIFY(!m_probe.windows().isViewable(localWindow));
        const QRect shownRect = labelRect.translated(m_probe.windows().rootGeometry(editorWindow)->topLeft());
        QTRY_COMPARE(m_probe.windows().grab(shownRect), expected);
    }

    bool waitForTrayIcon(VexetProcess& vexet)
    {
        return QTest::qWaitFor([&] { return m_probe.trayIcon(vexet.pid()).has_value(); }, 30000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_probe.isReady(), "needs the virtual desktop (X server with XTest)");
        QVERIFY(QFileInfo(VexetProcess::binary()).isExecutable());
        QCOMPARE(QGuiApplication::screens().size(), 2);
        QSettings settings(m_configHome.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        settings.setValue(u"copyAutomatically"_s, false);
        settings.sync();
    }

    void theRunningVexetRunsTheCommandsItIsHanded()
    {
        VexetProcess vexet(m_configHome.path());
        QVERIFY(vexet.start());
        QVERIFY2(waitForTrayIcon(vexet), "no tray icon appeared");
        QVERIFY(m_probe.mappedClientWindows(vexet.pid()).isEmpty());

        m_probe.input().movePointer(QGuiApplication::screens().at(1)->geometry().center());
        Finished capture = run({ u"--capture"_s, u"screen"_s }, environment());
        QVERIFY(capture.ended);
        QCOMPARE(capture.exitCode, 0);
        QCOMPARE(capture.standardError, QString());
        QVERIFY2(m_probe.waitForWindowsTitled(vexet.pid(), m_editorTitle, 1, 30000), "no editor opened");
        const xcb_window_t editor = m_probe.windowsTitled(vexet.pid(), m_editorTitle).first();
        checkStatusLineOfSecondMonitorCapture(editor);
        QCOMPARE(m_probe.mappedClientWindows(vexet.pid()).size(), 1);
        m_probe.requestClose(editor);
        QVERIFY(QTest::qWaitFor([&] { return m_probe.mappedClientWindows(vexet.pid()).isEmpty(); }, 20000));

        // A wrong command never reaches the running Vexet.
        const Finished bogus = run({ u"--capture"_s, u"bogus"_s }, environment());
        QVERIFY(bogus.ended);
        QCOMPARE(bogus.exitCode, 2);
        QCOMPARE(bogus.standardError,
            u"vexet: Bilinmeyen yakalama türü: bogus (region, window, screen ya da video olmalı).\n"_s
                + CommandLine::usage() + u"\nAyrıntılar için: vexet --help\n"_s);
        QCOMPARE(bogus.standardOutput, QString());

        const Finished settings = run({ u"--settings"_s }, environment());
        QVERIFY(settings.ended);
        QCOMPARE(settings.exitCode, 0);
        QVERIFY2(m_probe.waitForWindowsTitled(vexet.pid(), m_settingsTitle, 1), "no settings window opened");
        // Only what --settings asked for is on screen: the wrong command changed nothing.
        QCOMPARE(m_probe.mappedClientWindows(vexet.pid()).size(), 1);

        // A plain start while the settings show leaves them as they are; with none showing it
        // opens them again.
        const xcb_window_t settingsWindow = m_probe.windowsTitled(vexet.pid(), m_settingsTitle).first();
        m_probe.requestClose(settingsWindow);
        QVERIFY(QTest::qWaitFor([&] { return m_probe.mappedClientWindows(vexet.pid()).isEmpty(); }, 20000));
        const Finished reopen = run({}, environment());
        QVERIFY(reopen.ended);
        QCOMPARE(reopen.exitCode, 0);
        QVERIFY2(
            m_probe.waitForWindowsTitled(vexet.pid(), m_settingsTitle, 1), "reopening showed no settings");

        int exitCode = -1;
        QVERIFY2(vexet.terminateAndWait(&exitCode), qPrintable(u"exit code %1"_s.arg(exitCode)));
    }

    void aCommandWithNoVexetRunningStartsIt()
    {
        VexetProcess vexet(m_configHome.path());
        vexet.process().setArguments({ u"--capture"_s, u"screen"_s });
        m_probe.input().movePointer(QGuiApplication::screens().at(1)->geometry().center());
        QVERIFY(vexet.start());
        QVERIFY2(m_probe.waitForWindowsTitled(vexet.pid(), m_editorTitle, 1, 30000), "no editor opened");
        checkStatusLineOfSecondMonitorCapture(m_probe.windowsTitled(vexet.pid(), m_editorTitle).first());
        QVERIFY2(waitForTrayIcon(vexet), "it did not stay in the tray");
        QCOMPARE(vexet.process().state(), QProcess::Running);

        // It took the socket: the next command goes to it.
        const Finished settings = run({ u"--settings"_s }, environment());
        QCOMPARE(settings.exitCode, 0);
        QVERIFY2(m_probe.waitForWindowsTitled(vexet.pid(), m_settingsTitle, 1), "no settings window opened");

        int exitCode = -1;
        QVERIFY2(vexet.terminateAndWait(&exitCode), qPrintable(u"exit code %1"_s.arg(exitCode)));
    }

    void twoStartsAtOnceMakeOneVexet()
    {
        VexetProcess first(m_configHome.path());
        VexetProcess second(m_configHome.path());
        first.process().setArguments({ u"--settings"_s });
        second.process().setArguments({ u"--settings"_s });
        QVERIFY(first.start());
        QVERIFY(second.start());
        const auto ended
            = [](VexetProcess& vexet) { return vexet.process().state() == QProcess::NotRunning; };
        QVERIFY(QTest::qWaitFor([&] { return ended(first) || ended(second); }, 30000));
        VexetProcess& handedOver = ended(first) ? first : second;
        VexetProcess& running = ended(first) ? second : first;
        QCOMPARE(handedOver.process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(handedOver.process().exitCode(), 0);
        QVERIFY2(waitForTrayIcon(running), "the remaining Vexet is not in the tray");
        // Both asked for the settings window; the one Vexet shows it once.
        QVERIFY2(
            m_probe.waitForWindowsTitled(running.pid(), m_settingsTitle, 1), "no settings window opened");
        QCOMPARE(m_probe.mappedClientWindows(running.pid()).size(), 1);
        QCOMPARE(running.process().state(), QProcess::Running);

        int exitCode = -1;
        QVERIFY2(running.terminateAndWait(&exitCode), qPrintable(u"exit code %1"_s.arg(exitCode)));
    }

    void helpAndVersionNeedNoDisplay()
    {
        QProcessEnvironment bare = environment();
        for (const QString& name :
            { u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"XAUTHORITY"_s, u"QT_QPA_PLATFORM"_s })
            bare.remove(name);

        const Finished help = run({ u"--help"_s }, bare);
        QVERIFY(help.ended);
        QCOMPARE(help.exitCode, 0);
        QCOMPARE(help.standardOutput, CommandLine::help());
        QCOMPARE(help.standardError, QString());
        for (CaptureMode mode : CaptureModes::allCases)
            QVERIFY(help.standardOutput.contains(u"--capture "_s + AppCommand::modeName(mode)));

        const Finished version = run({ u"--version"_s }, bare);
        QVERIFY(version.ended);
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.standardOutput, u"Vexet %1\n"_s.arg(QStringLiteral(VEXET_VERSION)));
        QCOMPARE(version.standardError, QString());

        const Finished wrong = run({ u"--capture"_s }, bare);
        QVERIFY(wrong.ended);
        QCOMPARE(wrong.exitCode, 2);
        QVERIFY(wrong.standardError.startsWith(u"vexet: --capture bir yakalama türü ister"_s));
    }
};

QTEST_MAIN(TestCommandsEndToEnd)
#include "tst_commands_e2e.moc"
