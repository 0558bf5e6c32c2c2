#include "HotKeys.h"
#include "KeyTable.h"
#include "Preferences.h"
#include "X11Connection.h"
#include "X11GlobalKeys.h"
#include "X11Input.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

// The registry on the real X server, pressed with real keys through XTest.
class TestHotKeys : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<X11GlobalKeys> m_keys;
    std::unique_ptr<HotKeys> m_hotKeys;
    QList<CaptureMode> m_captured;
    X11Connection m_other; // another client on the same server
    X11Input m_input { m_other };

    static const QList<quint32>& defaultModifiers()
    {
        static const QList<quint32> keys { XK_Alt_L, XK_Shift_L, XK_Super_L };
        return keys;
    }

    void press(quint32 keysym, const QList<quint32>& modifiers = defaultModifiers())
    {
        QVERIFY(m_input.typeCombination(modifiers + QList<quint32> { keysym }));
    }

    // Presses and waits: true when exactly the expected modes fired.
    bool pressAndSee(quint32 keysym, const QList<CaptureMode>& expected)
    {
        m_captured.clear();
        press(keysym);
        if (expected.isEmpty()) {
            QTest::qWait(400);
            return m_captured.isEmpty();
        }
        return QTest::qWaitFor([&] { return m_captured.size() >= expected.size(); }, 10000)
            && (QTest::qWait(100), m_captured == expected);
    }

    // Whether another client could grab all four lock variants of Alt+Shift+Super+key now.
    bool otherClientCanGrab(quint32 keysym)
    {
        X11Connection third;
        X11GlobalKeys probe(third.get(), third.root());
        const std::optional<KeyInfo> key = KeyTable::byKeysym(keysym);
        const int status = probe.grab(key->keyCode, 2816, 1);
        probe.ungrab(1);
        third.flush();
        return status == 0;
    }

    uint16_t lockState()
    {
        XcbReply<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
            m_other.get(), xcb_query_pointer(m_other.get(), m_other.root()), nullptr));
        return reply ? reply->mask : 0;
    }

    static void xmodmap(const QStringList& expressions)
    {
        QStringList arguments;
        for (const QString& expression : expressions)
            arguments << u"-e"_s << expression;
        QCOMPARE(QProcess::execute(u"xmodmap"_s, arguments), 0);
    }

private Q_SLOTS:
    void init()
    {
        auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        QVERIFY(x11 && m_input.isAvailable());
        m_preferences = std::make_unique<Preferences>(
            std::make_unique<QSettings>(m_dir.filePath(u"Vexet.conf"_s), QSettings::IniFormat));
        m_preferences->defaults().clear();
        xcb_connection_t* connection = x11->connection();
        m_keys = std::make_unique<X11GlobalKeys>(
            connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
        m_hotKeys = std::make_unique<HotKeys>(*m_keys, *m_preferences);
        m_captured.clear();
        m_hotKeys->onCapture = [this](CaptureMode mode) { m_captured.append(mode); };
    }

    void cleanup()
    {
        m_hotKeys.reset();
        m_keys.reset();
    }

    void resumeRegistersEveryModeAndPressesArrive()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        QCOMPARE(m_hotKeys->registeredCount(), 4);
        QVERIFY(pressAndSee(XK_5, { CaptureMode::screen }));
        QVERIFY(pressAndSee(XK_3, { CaptureMode::region }));
        QVERIFY(pressAndSee(XK_4, { CaptureMode::window }));
        QVERIFY(pressAndSee(XK_g, { CaptureMode::video }));
        // Twice in a row still leaves one registration per mode: one press, one capture.
        QCOMPARE(m_hotKeys->resume(), QStringList());
        QCOMPARE(m_hotKeys->registeredCount(), 4);
        QVERIFY(pressAndSee(XK_5, { CaptureMode::screen }));
    }

    void aPressIsDeliveredThroughTheEventLoop()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        m_hotKeys->pressed(3);
        QVERIFY(m_captured.isEmpty());
        QTRY_COMPARE(m_captured, QList<CaptureMode> { CaptureMode::screen });
    }

    void pressesThatMatchNoRegistrationDoNothing()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        for (int id : { 0, 5, -1, 1000 })
            m_hotKeys->pressed(id);
        QVERIFY(pressAndSee(XK_7, {}));
        QVERIFY(m_input.typeCombination({ XK_Alt_L, XK_Super_L, XK_5 })); // Shift missing
        QTest::qWait(300);
        QVERIFY(m_captured.isEmpty());
        m_hotKeys->suspend();
        m_hotKeys->pressed(3);
        QTest::qWait(100);
        QVERIFY(m_captured.isEmpty());
    }

    void capsLockAndNumLockDoNotStopAShortcut()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        const uint16_t numLock = m_keys->modifierBits().numLock;
        for (const auto& [lock, bit] : { std::pair<quint32, uint16_t>(XK_Caps_Lock, XCB_MOD_MASK_LOCK),
                 std::pair<quint32, uint16_t>(XK_Num_Lock, numLock) }) {
            QVERIFY(m_input.typeCombination({ lock }));
            QVERIFY(lockState() & bit); // lit now
            QVERIFY(pressAndSee(XK_5, { CaptureMode::screen }));
            QVERIFY(m_input.typeCombination({ lock }));
            QVERIFY(!(lockState() & bit));
        }
    }

    void suspendDropsEverythingAndNothingFires()
    {
        m_hotKeys->suspend(); // on an empty registry: nothing happens
        QCOMPARE(m_hotKeys->registeredCount(), 0);
        QCOMPARE(m_hotKeys->resume(), QStringList());
        m_hotKeys->suspend();
        QCOMPARE(m_hotKeys->registeredCount(), 0);
        QVERIFY(pressAndSee(XK_5, {}));
        QVERIFY(otherClientCanGrab(XK_5));
    }

    void aCombinationHeldElsewhereFailsWholeAndLeavesTheModeWithout()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        m_hotKeys->suspend();
        X11GlobalKeys holder(m_other.get(), m_other.root());
        QCOMPARE(holder.grab(21, 2816, 9), 0); // Alt+Shift+Super+4, before us
        m_other.flush();

        QCOMPARE(m_hotKeys->resume(), QStringList { u"Pencere yakala: ⌥⇧⌘4"_s });
        QVERIFY(!m_hotKeys->isRegistered(CaptureMode::window));
        QCOMPARE(m_hotKeys->registeredCount(), 3);
        QCOMPARE(
            m_hotKeys->registerShortcut(Shortcut::defaultShortcut(CaptureMode::window), CaptureMode::window),
            -10); // BadAccess
        QVERIFY(pressAndSee(XK_5, { CaptureMode::screen }));

        // The failed registration left none of its grabs behind.
        holder.ungrab(9);
        m_other.flush();
        QVERIFY(otherClientCanGrab(XK_4));
    }

    void aFailedRegistrationIsNotRestoredByTheRegistry()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        X11GlobalKeys holder(m_other.get(), m_other.root());
        QCOMPARE(holder.grab(KeyTable::byKeysym(XK_k)->keyCode, 2816, 9), 0);
        m_other.flush();
        const Shortcut held { KeyTable::byKeysym(XK_k)->keyCode, 2816, u"K"_s };
        QCOMPARE(m_hotKeys->registerShortcut(held, CaptureMode::screen), -10);
        QVERIFY(!m_hotKeys->isRegistered(CaptureMode::screen));
        QVERIFY(pressAndSee(XK_5, {}));
    }

    void aLayoutChangeIsFollowedAtTheNextResume()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        // Move "5" to another key, as a different layout would.
        xmodmap({ u"keycode 14 = NoSymbol"_s, u"keycode 200 = 5 percent"_s });
        QCOMPARE(m_hotKeys->resume(), QStringList());
        const bool fired = pressAndSee(XK_5, { CaptureMode::screen });
        xmodmap({ u"keycode 200 = NoSymbol"_s, u"keycode 14 = 5 percent"_s });
        QVERIFY(fired);
        QCOMPARE(m_hotKeys->resume(), QStringList());
        QVERIFY(pressAndSee(XK_5, { CaptureMode::screen }));
    }

    void teardownReleasesEveryGrab()
    {
        QCOMPARE(m_hotKeys->resume(), QStringList());
        QVERIFY(!otherClientCanGrab(XK_5));
        m_hotKeys.reset();
        m_keys.reset();
        QVERIFY(otherClientCanGrab(XK_5));
        QVERIFY(otherClientCanGrab(XK_g));
    }
};

QTEST_MAIN(TestHotKeys)
#include "tst_hotkeys.moc"
