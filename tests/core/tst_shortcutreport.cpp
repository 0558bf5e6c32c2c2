#include "HotKeysInterface.h"
#include "Preferences.h"
#include "ShortcutReport.h"

#include <QHash>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A registry in a given state: who binds, and what the desktop bound.
class StateHotKeys : public HotKeysInterface {
public:
    ShortcutBinder binder() const override { return binderNow; }
    int registerShortcut(const Shortcut&, CaptureMode) override { return 0; }
    void suspend() override { }
    QStringList resume() override { return {}; }
    bool settled() const override { return true; }
    QString label(CaptureMode mode) const override { return labels.value(mode); }
    bool canConfigure() const override { return false; }
    void configure() override { }

    ShortcutBinder binderNow = ShortcutBinder::program;
    QHash<CaptureMode, QString> labels;
};

} // namespace

// The launch alert about the shortcuts says what this desktop's answer means for the user.
class TestShortcutReport : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    StateHotKeys m_hotKeys;

private Q_SLOTS:
    void init()
    {
        m_preferences = std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(u"%1.conf"_s.arg(QLatin1String(QTest::currentTestFunction()))),
            QSettings::IniFormat));
        m_hotKeys = StateHotKeys();
    }

    void cleanup() { m_preferences.reset(); }

    void theProgramsFailuresAreListedWithWhereToChangeThem()
    {
        QVERIFY(!ShortcutReport::atLaunch(m_hotKeys, {}, *m_preferences, { false, true }));
        const auto report = ShortcutReport::atLaunch(
            m_hotKeys, { u"Pencere yakala: ⌥⇧⌘4"_s }, *m_preferences, { false, false });
        QVERIFY(report);
        QCOMPARE(report->title, u"Kısayolları kontrol et"_s);
        QCOMPARE(report->text,
            u"Şu kısayollar kaydedilemedi. Vexet penceresinden Ayarlar’ı açıp değiştirebilirsin:\n"
            u"Pencere yakala: ⌥⇧⌘4"_s);
    }

    void theCommandsTheDesktopLeftWithoutAKeyAreListed()
    {
        m_hotKeys.binderNow = ShortcutBinder::desktop;
        for (CaptureMode mode : CaptureModes::allCases)
            m_hotKeys.labels.insert(mode, u"Alt+Shift+Meta+%1"_s.arg(CaptureModes::rawValue(mode)));
        // The failures of the request itself say nothing here: the desktop's answer does.
        QVERIFY(!ShortcutReport::atLaunch(m_hotKeys, { u"x"_s }, *m_preferences, { true, true }));

        m_hotKeys.labels.remove(CaptureMode::window);
        m_hotKeys.labels.insert(CaptureMode::video, QString());
        const auto report = ShortcutReport::atLaunch(m_hotKeys, {}, *m_preferences, { true, true });
        QVERIFY(report);
        QCOMPARE(report->title, u"Kısayolları kontrol et"_s);
        QCOMPARE(report->text,
            DesktopTexts::unboundCommandsLead() + u"Pencere yakala\nVideo kaydı başlat / durdur"_s);
        // Said at every launch while it holds.
        QVERIFY(ShortcutReport::atLaunch(m_hotKeys, {}, *m_preferences, { true, true }));
    }

    void aDesktopThatBindsOnlyCommandsIsExplainedOnce()
    {
        m_hotKeys.binderNow = ShortcutBinder::user;
        QVERIFY(!m_preferences->hasExplainedCommands());
        const auto report = ShortcutReport::atLaunch(m_hotKeys, { u"x"_s }, *m_preferences, { true, false });
        QVERIFY(report);
        QCOMPARE(report->title, u"Kısayolları masaüstün atar"_s);
        QCOMPARE(report->text, DesktopTexts::bindCommandsYourself());
        QVERIFY(m_preferences->hasExplainedCommands());
        QVERIFY(!ShortcutReport::atLaunch(m_hotKeys, {}, *m_preferences, { true, false }));
    }
};

QTEST_GUILESS_MAIN(TestShortcutReport)
#include "tst_shortcutreport.moc"
