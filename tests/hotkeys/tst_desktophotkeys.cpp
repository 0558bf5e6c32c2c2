#include "GlobalKeys.h"
#include "HotKeys.h"
#include "Preferences.h"

#include <QTemporaryDir>
#include <QTest>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Keys a desktop binds: every request is kept, and the answer comes when the test gives it.
class DesktopKeys : public GlobalKeys {
public:
    ShortcutBinder binder() const override { return binderNow; }
    void bind(const QList<Request>& requests) override
    {
        calls.append(requests);
        if (binderNow == ShortcutBinder::user && onBound) {
            QList<Binding> none;
            for (const Request& request : requests)
                none.append({ request.id, unavailable, {} });
            onBound(none);
        }
    }
    void release(int id) override { released.append(id); }

    void answer(const QList<Binding>& bindings) { onBound(bindings); }

    ShortcutBinder binderNow = ShortcutBinder::desktop;
    QList<QList<Request>> calls;
    QList<int> released;
};

} // namespace

// The registry where the desktop binds: the answer comes after the request, and only what the
// desktop confirmed counts.
class TestDesktopHotKeys : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<DesktopKeys> m_keys;
    std::unique_ptr<HotKeys> m_hotKeys;
    QList<CaptureMode> m_captured;
    int m_changes = 0;

    bool pressAndSee(int id, const QList<CaptureMode>& expected)
    {
        m_captured.clear();
        m_keys->onPressed(id);
        QCoreApplication::processEvents(); // a press reaches onCapture through the event loop
        // Element by element: QList's own comparison hands memcmp a null pointer for empty lists.
        return std::equal(m_captured.cbegin(), m_captured.cend(), expected.cbegin(), expected.cend());
    }

private Q_SLOTS:
    void init()
    {
        m_preferences = std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(u"%1.conf"_s.arg(QLatin1String(QTest::currentTestFunction()))),
            QSettings::IniFormat));
        m_keys = std::make_unique<DesktopKeys>();
        m_hotKeys = std::make_unique<HotKeys>(*m_keys, *m_preferences);
        m_captured.clear();
        m_changes = 0;
        m_hotKeys->onCapture = [this](CaptureMode mode) { m_captured.append(mode); };
        m_hotKeys->onChanged = [this] { ++m_changes; };
    }

    void cleanup()
    {
        m_hotKeys.reset();
        m_keys.reset();
        m_preferences.reset();
    }

    void allFourAreAskedForInOneRequestWithNamesAndDescriptions()
    {
        m_preferences->set(
            Shortcut { 0, Shortcut::controlKey | Shortcut::cmdKey, u"A"_s }, CaptureMode::window);
        QCOMPARE(m_hotKeys->resume(), QStringList());
        QCOMPARE(m_keys->calls.size(), 1);
        const QList<GlobalKeys::Request>& requests = m_keys->calls.first();
        QCOMPARE(requests.size(), 4);
        const QStringList names { u"region"_s, u"window"_s, u"screen"_s, u"video"_s };
        for (int i = 0; i < 4; ++i) {
            const CaptureMode mode = CaptureModes::allCases[size_t(i)];
            QCOMPARE(requests[i].id, int(CaptureModes::rawValue(mode)));
            QCOMPARE(requests[i].name, names[i]);
            QCOMPARE(requests[i].description, CaptureModes::title(mode));
            QCOMPARE(requests[i].keyCode, m_preferences->shortcut(mode).keyCode);
            QCOMPARE(requests[i].modifiers, m_preferences->shortcut(mode).modifiers);
        }
        QCOMPARE(requests[1].modifiers, Shortcut::controlKey | Shortcut::cmdKey);
    }

    void nothingCountsUntilTheDesktopAnswers()
    {
        m_hotKeys->resume();
        QVERIFY(!m_hotKeys->settled());
        QCOMPARE(m_hotKeys->label(CaptureMode::region), QString());
        QVERIFY(pressAndSee(1, {}));
        QCOMPARE(m_changes, 0);

        m_keys->answer(
            { { 1, 0, u"Alt+Shift+Meta+3"_s }, { 2, 0, QString() }, { 3, -1, {} }, { 4, 0, u"F9"_s } });
        QVERIFY(m_hotKeys->settled());
        QCOMPARE(m_changes, 1);
        QCOMPARE(m_hotKeys->label(CaptureMode::region), u"Alt+Shift+Meta+3"_s);
        QCOMPARE(m_hotKeys->label(CaptureMode::window), QString()); // known to the desktop, no key
        QCOMPARE(m_hotKeys->label(CaptureMode::screen), QString());
        QCOMPARE(m_hotKeys->label(CaptureMode::video), u"F9"_s);
        QVERIFY(pressAndSee(1, { CaptureMode::region }));
        QVERIFY(pressAndSee(2, { CaptureMode::window }));
        QVERIFY(pressAndSee(3, {})); // the desktop did not take it
        QVERIFY(pressAndSee(4, { CaptureMode::video }));
        QVERIFY(pressAndSee(0, {}));
        QVERIFY(pressAndSee(5, {}));
    }

    void aChangeOfTheDesktopsBindingShowsAtOnce()
    {
        m_hotKeys->resume();
        m_keys->answer({ { 1, 0, u"Alt+Shift+Meta+3"_s }, { 2, 0, u"Alt+Shift+Meta+4"_s },
            { 3, 0, u"Alt+Shift+Meta+5"_s }, { 4, 0, u"Alt+Shift+Meta+G"_s } });
        m_keys->answer({ { 1, 0, u"Print"_s }, { 2, 0, u"Alt+Shift+Meta+4"_s }, { 3, -1, {} },
            { 4, 0, u"Alt+Shift+Meta+G"_s } });
        QCOMPARE(m_changes, 2);
        QCOMPARE(m_hotKeys->label(CaptureMode::region), u"Print"_s);
        QCOMPARE(m_hotKeys->label(CaptureMode::screen), QString());
        QVERIFY(pressAndSee(3, {}));
        QCOMPARE(m_hotKeys->registeredCount(), 3);
    }

    void suspendingReleasesEveryBoundId()
    {
        m_hotKeys->resume();
        m_keys->answer({ { 1, 0, u"a"_s }, { 2, 0, u"b"_s }, { 3, -1, {} }, { 4, 0, u"d"_s } });
        m_hotKeys->suspend();
        std::sort(m_keys->released.begin(), m_keys->released.end());
        QCOMPARE(m_keys->released, (QList<int> { 1, 2, 4 }));
        QVERIFY(pressAndSee(1, {}));
    }

    void aSingleRegistrationIsPendingUntilAnswered()
    {
        QCOMPARE(
            m_hotKeys->registerShortcut(Shortcut::defaultShortcut(CaptureMode::screen), CaptureMode::screen),
            HotKeys::pending);
        QVERIFY(!m_hotKeys->settled());
        m_keys->answer({ { 3, 0, u"Alt+Shift+Meta+5"_s } });
        QVERIFY(m_hotKeys->settled());
        QVERIFY(m_hotKeys->isRegistered(CaptureMode::screen));
    }

    void whereNothingBindsKeysThereAreNoLabelsAndNoPresses()
    {
        m_keys->binderNow = ShortcutBinder::user;
        const QStringList failures = m_hotKeys->resume();
        QCOMPARE(failures.size(), 4);
        QVERIFY(m_hotKeys->settled());
        QCOMPARE(m_changes, 0); // answered inside the request
        QCOMPARE(m_hotKeys->binder(), ShortcutBinder::user);
        for (CaptureMode mode : CaptureModes::allCases)
            QCOMPARE(m_hotKeys->label(mode), QString());
        QVERIFY(pressAndSee(1, {}));
    }
};

QTEST_GUILESS_MAIN(TestDesktopHotKeys)
#include "tst_desktophotkeys.moc"
