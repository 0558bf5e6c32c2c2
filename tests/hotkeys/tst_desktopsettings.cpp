#include "AppCommand.h"
#include "DesktopTexts.h"
#include "Fakes.h"
#include "SettingsController.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The settings window where the desktop binds the keys, and where it binds only commands.
class TestDesktopSettings : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    FakeHotKeys m_hotKeys;

    std::unique_ptr<SettingsController> open()
    {
        auto settings = std::make_unique<SettingsController>(m_hotKeys, *m_preferences);
        settings->showWindow();
        return settings;
    }

    static QStringList texts(const QWidget& window)
    {
        QStringList all;
        const QList<QLabel*> labels = window.findChildren<QLabel*>();
        for (const QLabel* label : labels) {
            if (label->isVisibleTo(&window))
                all.append(label->text());
        }
        return all;
    }

private Q_SLOTS:
    void init()
    {
        m_preferences = std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(u"%1.conf"_s.arg(QLatin1String(QTest::currentTestFunction()))),
            QSettings::IniFormat));
        m_hotKeys = FakeHotKeys();
        m_hotKeys.binderNow = ShortcutBinder::desktop;
    }

    void cleanup() { m_preferences.reset(); }

    void eachRowShowsWhatTheDesktopBound()
    {
        m_hotKeys.labels
            = { { CaptureMode::region, u"Alt+Shift+Meta+3"_s }, { CaptureMode::screen, u"Print"_s } };
        auto settings = open();
        QCOMPARE(settings->binder(), ShortcutBinder::desktop);
        QCOMPARE(settings->triggerLabel(CaptureMode::region)->text(), u"Alt+Shift+Meta+3"_s);
        QCOMPARE(settings->triggerLabel(CaptureMode::window)->text(), u"Atanmamış"_s);
        QCOMPARE(settings->triggerLabel(CaptureMode::screen)->text(), u"Print"_s);
        QCOMPARE(settings->triggerLabel(CaptureMode::video)->text(), u"Atanmamış"_s);
        // Nothing here records keys or resets them.
        for (CaptureMode mode : CaptureModes::allCases) {
            QCOMPARE(settings->recorder(mode), nullptr);
            QCOMPARE(settings->commandField(mode), nullptr);
        }
        QVERIFY(!settings->resetButton()->isVisibleTo(settings.get()));
        const QStringList shown = texts(*settings);
        QVERIFY(shown.contains(u"Kısayollar"_s));
        QVERIFY(shown.contains(CaptureModes::title(CaptureMode::video)));

        // The desktop changes a binding: the row follows at once.
        m_hotKeys.labels.insert(CaptureMode::window, u"Ctrl+Print"_s);
        m_hotKeys.answer();
        settings->shortcutsChanged();
        QCOMPARE(settings->triggerLabel(CaptureMode::window)->text(), u"Ctrl+Print"_s);
    }

    void theDesktopsOwnSettingsOpenFromHereWhenThePortalOffersIt()
    {
        auto settings = open();
        QCOMPARE(settings->configureButton(), nullptr);
        QVERIFY(texts(*settings).contains(DesktopTexts::desktopShortcutsPlace()));

        m_hotKeys.configurable = true;
        settings = open();
        QPushButton* configure = settings->configureButton();
        QVERIFY(configure && configure->isVisibleTo(settings.get()));
        QCOMPARE(configure->text(), u"Masaüstünün kısayol ayarlarını aç"_s);
        QVERIFY(!texts(*settings).contains(DesktopTexts::desktopShortcutsPlace()));
        configure->click();
        QCOMPARE(m_hotKeys.configures, 1);
    }

    void whereTheUserBindsEachRowOffersItsCommandToCopy()
    {
        m_hotKeys.binderNow = ShortcutBinder::user;
        auto settings = open();
        for (CaptureMode mode : CaptureModes::allCases) {
            QLineEdit* command = settings->commandField(mode);
            QVERIFY(command);
            QVERIFY(command->isReadOnly());
            QCOMPARE(command->text(), u"vexet --capture "_s + AppCommand::modeName(mode));
            QCOMPARE(settings->triggerLabel(mode), nullptr);
        }
        QGuiApplication::clipboard()->setText(u"önceki"_s);
        settings->commandCopyButton(CaptureMode::window)->click();
        QVERIFY(QTest::qWaitFor(
            [] { return QGuiApplication::clipboard()->text() == u"vexet --capture window"_s; }, 5000));
        QCOMPARE(settings->noteLabel()->text(),
            u"Kırpılmış resmi panoya almak için önizlemede Kopyala’ya bas. Komutlar, Vexet kapalıyken onu da "
            u"başlatır."_s);
        QVERIFY(!settings->resetButton()->isVisibleTo(settings.get()));
    }

    void theAutomaticCopySwitchWorksWhoeverBinds()
    {
        for (ShortcutBinder binder : { ShortcutBinder::desktop, ShortcutBinder::user }) {
            m_hotKeys.binderNow = binder;
            auto settings = open();
            QVERIFY(settings->copyCheckBox()->isChecked());
            settings->copyCheckBox()->click();
            QVERIFY(!m_preferences->copyAutomatically());
            settings->copyCheckBox()->click();
            QVERIFY(m_preferences->copyAutomatically());
        }
    }

    void aBinderLearnedLaterRebuildsTheRows()
    {
        auto settings = open();
        QVERIFY(settings->triggerLabel(CaptureMode::region));
        // The portal turned out to be missing.
        m_hotKeys.binderNow = ShortcutBinder::user;
        settings->shortcutsChanged();
        QCOMPARE(settings->binder(), ShortcutBinder::user);
        QCOMPARE(settings->triggerLabel(CaptureMode::region), nullptr);
        QVERIFY(settings->commandField(CaptureMode::region));
        QVERIFY(!texts(*settings).contains(DesktopTexts::desktopShortcutsPlace()));
    }

    void resettingChangesNothingTheDesktopBound()
    {
        m_preferences->set(Shortcut { 0, Shortcut::controlKey, u"A"_s }, CaptureMode::region);
        auto settings = open();
        int changes = 0;
        settings->onChange = [&changes] { ++changes; };
        settings->reset();
        QCOMPARE(changes, 0);
        QCOMPARE(m_preferences->shortcut(CaptureMode::region).modifiers, Shortcut::controlKey);
        QCOMPARE(m_hotKeys.resumes, 0);
    }
};

QTEST_MAIN(TestDesktopSettings)
#include "tst_desktopsettings.moc"
