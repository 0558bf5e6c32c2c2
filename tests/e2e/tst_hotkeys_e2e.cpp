#include "DesktopProbe.h"
#include "FakesForLayout.h"
#include "KeyTable.h"
#include "Preferences.h"
#include "SettingsController.h"
#include "ShortcutRecorder.h"
#include "StatusMenuImage.h"
#include "VexetProcess.h"
#include "X11GlobalKeys.h"

#include <QApplication>
#include <QClipboard>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

// Global shortcuts of the real program, pressed with real keys while another program has the
// keyboard, and changed in its real settings window.
class TestHotKeysEndToEnd : public QObject {
    Q_OBJECT

    DesktopProbe m_probe;
    std::unique_ptr<QTemporaryDir> m_configHome;
    std::unique_ptr<QWidget> m_otherProgram;
    const QString m_editorTitle = u"Vexet — Önizleme ve kırpma"_s;

    QString settingsFile() const { return m_configHome->filePath(u"Vexet/Vexet.conf"_s); }

    void focusOtherProgram()
    {
        m_otherProgram->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_otherProgram.get()));
    }

    bool type(const QList<quint32>& keysyms) { return m_probe.input().typeCombination(keysyms); }

    // The texts of the program's alert as Qt copies them with Ctrl+C; the alert is then closed.
    QString readAndCloseAlert(VexetProcess& vexet)
    {
        if (!m_probe.waitForWindowsTitled(vexet.pid(), u"Vexet"_s, 1))
            return {};
        const xcb_window_t alert = m_probe.windowsTitled(vexet.pid(), u"Vexet"_s).first();
        QGuiApplication::clipboard()->clear();
        m_probe.focus(alert);
        QTest::qWait(200);
        type({ XK_Control_L, XK_c });
        QString text;
        const bool copied = QTest::qWaitFor(
            [&text] { return !(text = QGuiApplication::clipboard()->text()).isEmpty(); }, 10000);
        type({ XK_Return });
        const bool closed = m_probe.waitForWindowsTitled(vexet.pid(), u"Vexet"_s, 0);
        return copied && closed ? text : QString();
    }

    qsizetype editors(VexetProcess& vexet)
    {
        return m_probe.windowsTitled(vexet.pid(), m_editorTitle).size();
    }

    // A screen capture from the shortcut opens one more editor.
    void screenShortcutOpensAnEditor(VexetProcess& vexet, const QList<quint32>& keysyms)
    {
        focusOtherProgram();
        const qsizetype before = editors(vexet);
        QVERIFY(type(keysyms));
        QVERIFY2(m_probe.waitForWindowsTitled(vexet.pid(), m_editorTitle, before + 1), "no editor opened");
    }

    void clickRecorder(xcb_window_t settingsWindow, CaptureMode mode)
    {
        // Where the recorder sits in the settings window, laid out the same way here.
        FakeHotKeysForLayout hotKeys;
        Preferences preferences(std::make_unique<QSettings>(settingsFile(), QSettings::IniFormat));
        SettingsController layout(hotKeys, preferences);
        layout.show();
        QVERIFY(QTest::qWaitForWindowExposed(&layout));
        const QWidget* recorder = layout.recorder(mode);
        const QRect inWindow(recorder->mapTo(&layout, QPoint(0, 0)), recorder->size());
        layout.hide();
        const QRect window = m_probe.windows().rootGeometry(settingsWindow).value_or(QRect());
        QVERIFY(window.isValid());
        m_probe.input().click(window.topLeft() + inWindow.center());
        QTest::qWait(300);
    }

private Q_SLOTS:
    void init()
    {
        QVERIFY(m_probe.isReady());
        m_configHome = std::make_unique<QTemporaryDir>();
        QSettings settings(settingsFile(), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        settings.sync();
        m_otherProgram = std::make_unique<QWidget>();
        m_otherProgram->setWindowTitle(u"Başka bir program"_s);
        m_otherProgram->resize(400, 300);
        m_otherProgram->show();
    }

    void cleanup() { m_otherProgram.reset(); }

    void aHeldShortcutIsReportedAtLaunchAndTheOthersWork()
    {
        X11Connection holderConnection;
        X11GlobalKeys holder(holderConnection.get(), holderConnection.root());
        QCOMPARE(holder.grab(21, 2816, 1), 0); // Alt+Shift+Super+4, before Vexet starts
        holderConnection.flush();

        VexetProcess vexet(m_configHome->path());
        QVERIFY(vexet.start());
        const QString alert = readAndCloseAlert(vexet);
        QVERIFY2(alert.contains(u"Kısayolları kontrol et"_s), qPrintable(alert));
        QVERIFY2(alert.contains(u"Şu kısayollar kaydedilemedi. Sistem tepsisindeki simgeden Ayarlar’ı açıp "
                                u"değiştirebilirsin:\nPencere yakala: ⌥⇧⌘4"_s),
            qPrintable(alert));
        QVERIFY(!alert.contains(u"Ekranı yakala"_s));

        screenShortcutOpensAnEditor(vexet, { XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 });

        // The region shortcut works too: the selection comes up, and Escape leaves no editor behind.
        focusOtherProgram();
        const qsizetype before = editors(vexet);
        QVERIFY(type({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_3 }));
        QVERIFY2(
            QTest::qWaitFor([&] { return !m_probe.programWindows(u"vexet-capture"_s).isEmpty(); }, 20000),
            "no region selection came up");
        QTest::qWait(300);
        QVERIFY(type({ XK_Escape }));
        QVERIFY(QTest::qWaitFor([&] { return m_probe.programWindows(u"vexet-capture"_s).isEmpty(); }, 20000));
        QTest::qWait(1000);
        QCOMPARE(editors(vexet), before);
        QVERIFY(vexet.terminateAndWait());
    }

    void aHeldCombinationIsRefusedInTheSettingsAndANewOneTakesOver()
    {
        VexetProcess vexet(m_configHome->path());
        QVERIFY(vexet.start());
        QVERIFY(QTest::qWaitFor([&] { return m_probe.trayIcon(vexet.pid()).has_value(); }, 30000));

        // Starting the program again opens the settings of the running one.
        QVERIFY(vexet.startAgainAndWait());
        QVERIFY(m_probe.waitForWindowsTitled(vexet.pid(), u"Vexet — Ayarlar"_s, 1));
        const xcb_window_t settings = m_probe.windowsTitled(vexet.pid(), u"Vexet — Ayarlar"_s).first();

        // Another program holds Ctrl+Super+K (without lock keys); typed with Num Lock lit, the
        // recorder gets it and registering it fails.
        X11Connection holderConnection;
        const xcb_keycode_t k = 45; // "k" on the server's default layout
        XcbReply<xcb_generic_error_t> refused(xcb_request_check(holderConnection.get(),
            xcb_grab_key_checked(holderConnection.get(), 1, holderConnection.root(),
                XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4, k, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        QVERIFY(!refused);
        clickRecorder(settings, CaptureMode::screen);
        QVERIFY(type({ XK_Num_Lock }));
        QVERIFY(type({ XK_Control_L, XK_Super_L, XK_k }));
        QVERIFY(type({ XK_Num_Lock }));
        const QString alert = readAndCloseAlert(vexet);
        QVERIFY2(alert.contains(u"Kısayol atanamadı"_s), qPrintable(alert));
        QVERIFY2(alert.contains(u"Hata: -10"_s), qPrintable(alert));
        screenShortcutOpensAnEditor(vexet, { XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 });
        for (xcb_window_t editor : m_probe.windowsTitled(vexet.pid(), m_editorTitle))
            m_probe.requestClose(editor);
        QVERIFY(m_probe.waitForWindowsTitled(vexet.pid(), m_editorTitle, 0));

        // A free combination takes over: stored, registered, shown in the menu; the old one is gone.
        m_probe.focus(settings);
        clickRecorder(settings, CaptureMode::screen);
        QVERIFY(type({ XK_Control_L, XK_Super_L, XK_j }));
        QTest::qWait(500);
        QSettings stored(settingsFile(), QSettings::IniFormat);
        const QJsonObject json
            = QJsonDocument::fromJson(stored.value(u"shortcut.3"_s).toByteArray()).object();
        QCOMPARE(json.keys(), (QStringList { u"keyCode"_s, u"keyLabel"_s, u"modifiers"_s }));
        QCOMPARE(json.value(u"keyLabel"_s).toString(), u"J"_s);
        screenShortcutOpensAnEditor(vexet, { XK_Control_L, XK_Super_L, XK_j });
        const qsizetype before = editors(vexet);
        QVERIFY(type({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 }));
        QTest::qWait(1500);
        QCOMPARE(editors(vexet), before);

        const std::optional<xcb_window_t> icon = m_probe.trayIcon(vexet.pid());
        QVERIFY(icon);
        m_probe.input().click(m_probe.windows().rootGeometry(*icon)->center());
        QList<xcb_window_t> menus;
        QVERIFY(QTest::qWaitFor([&] { return !(menus = m_probe.popupMenus(vexet.pid())).isEmpty(); }, 20000));
        m_probe.input().movePointer(QPoint(10, 1000));
        Preferences preferences(std::make_unique<QSettings>(settingsFile(), QSettings::IniFormat));
        QCOMPARE(preferences.shortcut(CaptureMode::screen).display(), u"⌃⌘J"_s);
        QVERIFY2(m_probe.stableGrab(menus.first()) == StatusMenuImage::render(preferences),
            "the menu does not show the new shortcut");
        QVERIFY(vexet.terminateAndWait());
    }
};

QTEST_MAIN(TestHotKeysEndToEnd)
#include "tst_hotkeys_e2e.moc"
