#include "AlertCatcher.h"
#include "HotKeys.h"
#include "KeyTable.h"
#include "Preferences.h"
#include "SettingsController.h"
#include "ShortcutRecorder.h"
#include "X11Connection.h"
#include "X11GlobalKeys.h"
#include "X11Input.h"

#include <QCheckBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

// The settings window with the real registry on the real X server, typed at with real keys.
class TestSettingsController : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<X11GlobalKeys> m_keys;
    std::unique_ptr<HotKeys> m_hotKeys;
    std::unique_ptr<SettingsController> m_settings;
    X11Connection m_other;
    X11Input m_input { m_other };
    QList<CaptureMode> m_captured;
    int m_changes = 0;

    void record(CaptureMode mode, const QList<quint32>& keysyms)
    {
        ShortcutRecorder* recorder = m_settings->recorder(mode);
        m_input.click(recorder->mapToGlobal(recorder->rect().center()));
        QVERIFY(QTest::qWaitFor([recorder] { return recorder->isRecording(); }, 10000));
        QVERIFY(m_input.typeCombination(keysyms));
        QVERIFY(QTest::qWaitFor([recorder] { return !recorder->isRecording(); }, 10000));
        QTest::qWait(300); // an alert, if any, shows now
    }

    bool fires(const QList<quint32>& keysyms, CaptureMode mode)
    {
        m_captured.clear();
        if (!m_input.typeCombination(keysyms))
            return false;
        return QTest::qWaitFor([this] { return !m_captured.isEmpty(); }, 5000)
            && m_captured == QList { mode };
    }

    xcb_keycode_t keycodeOf(quint32 keysym)
    {
        XcbReply<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(m_other.get(),
            xcb_get_keyboard_mapping(m_other.get(), xcb_get_setup(m_other.get())->min_keycode,
                static_cast<uint8_t>(xcb_get_setup(m_other.get())->max_keycode
                    - xcb_get_setup(m_other.get())->min_keycode + 1)),
            nullptr));
        const xcb_keysym_t* syms = xcb_get_keyboard_mapping_keysyms(mapping.get());
        const int count = xcb_get_keyboard_mapping_keysyms_length(mapping.get());
        for (int i = 0; i < count; ++i) {
            if (syms[i] == keysym)
                return static_cast<xcb_keycode_t>(
                    xcb_get_setup(m_other.get())->min_keycode + i / mapping->keysyms_per_keycode);
        }
        return 0;
    }

    bool staysQuiet(const QList<quint32>& keysyms)
    {
        m_captured.clear();
        m_input.typeCombination(keysyms);
        QTest::qWait(400);
        return m_captured.isEmpty();
    }

private Q_SLOTS:
    void init()
    {
        auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        QVERIFY(x11);
        m_preferences = std::make_unique<Preferences>(
            std::make_unique<QSettings>(m_dir.filePath(u"Vexet.conf"_s), QSettings::IniFormat));
        m_preferences->defaults().clear();
        m_keys = std::make_unique<X11GlobalKeys>(
            x11->connection(), xcb_setup_roots_iterator(xcb_get_setup(x11->connection())).data->root);
        m_hotKeys = std::make_unique<HotKeys>(*m_keys, *m_preferences);
        m_hotKeys->onCapture = [this](CaptureMode mode) { m_captured.append(mode); };
        QCOMPARE(m_hotKeys->resume(), QStringList());
        m_settings = std::make_unique<SettingsController>(*m_hotKeys, *m_preferences);
        m_changes = 0;
        m_settings->onChange = [this] { ++m_changes; };
        m_settings->showWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_settings.get()));
    }

    void cleanup()
    {
        m_settings.reset();
        m_hotKeys.reset();
        m_keys.reset();
    }

    void theWindowShowsEveryRow()
    {
        QCOMPARE(m_settings->windowTitle(), u"Vexet — Ayarlar"_s);
        QCOMPARE(m_settings->size(), QSize(610, 555));
        QStringList texts;
        QList<QLabel*> labels = m_settings->findChildren<QLabel*>();
        const auto top
            = [this](const QLabel* label) { return label->mapTo(m_settings.get(), QPoint(0, 0)).y(); };
        std::sort(labels.begin(), labels.end(), [&top](QLabel* a, QLabel* b) { return top(a) < top(b); });
        for (QLabel* label : labels)
            texts << label->text();
        QCOMPARE(texts,
            (QStringList { u"Kendi kısayollarını belirle"_s,
                u"Kısayola tıkla, ardından yeni tuş birleşimine bas. En az ⌘, ⌥ veya ⌃ kullan. İptal etmek için Esc’ye bas."_s,
                u"Alan seçerek yakala"_s, u"Pencere yakala"_s, u"Ekranı yakala"_s,
                u"Video kaydı başlat / durdur"_s,
                u"Kırpılmış resmi panoya almak için önizlemede Kopyala’ya bas. Kısayollar, Vexet açıkken diğer uygulamalarda da çalışır."_s }));
        QCOMPARE(labels[0]->font().pixelSize(), 22);
        QVERIFY(labels[0]->font().bold());
        QCOMPARE(labels.last()->font().pixelSize(), 12);
        const QStringList displays { u"⌥⇧⌘3"_s, u"⌥⇧⌘4"_s, u"⌥⇧⌘5"_s, u"⌥⇧⌘G"_s };
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(labels[i + 2]->width(), 195);
            ShortcutRecorder* recorder = m_settings->recorder(CaptureModes::allCases[i]);
            QCOMPARE(recorder->width(), 295);
            QCOMPARE(recorder->text(), displays[i]);
            QCOMPARE(recorder->x() - labels[i + 2]->geometry().right() - 1, 12);
        }
        QCOMPARE(m_settings->copyCheckBox()->text(), u"Çekimden sonra orijinali otomatik panoya kopyala"_s);
        QVERIFY(m_settings->copyCheckBox()->isChecked());
        QCOMPARE(m_settings->resetButton()->text(), u"Varsayılan kısayolları geri yükle"_s);
    }

    void theCheckboxWritesCopyAutomatically()
    {
        m_input.click(
            m_settings->copyCheckBox()->mapToGlobal(QPoint(8, m_settings->copyCheckBox()->height() / 2)));
        QTRY_VERIFY(!m_preferences->copyAutomatically());
        QCOMPARE(m_preferences->defaults().value(u"copyAutomatically"_s).toBool(), false);
        m_settings->copyCheckBox()->click();
        QVERIFY(m_preferences->copyAutomatically());
    }

    void aNewCombinationIsRegisteredStoredAndShown()
    {
        record(CaptureMode::screen, { XK_Control_L, XK_Super_L, XK_j });
        QCOMPARE(m_settings->recorder(CaptureMode::screen)->text(), u"⌃⌘J"_s);
        QCOMPARE(m_changes, 1);
        const QJsonObject stored
            = QJsonDocument::fromJson(m_preferences->defaults().value(u"shortcut.3"_s).toByteArray())
                  .object();
        QCOMPARE(stored.keys(), (QStringList { u"keyCode"_s, u"keyLabel"_s, u"modifiers"_s }));
        QCOMPARE(stored.value(u"keyCode"_s).toInt(), 38);
        QCOMPARE(stored.value(u"modifiers"_s).toInt(), 4096 + 256);
        QCOMPARE(stored.value(u"keyLabel"_s).toString(), u"J"_s);
        QVERIFY(fires({ XK_Control_L, XK_Super_L, XK_j }, CaptureMode::screen));
        QVERIFY(staysQuiet({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 }));
    }

    void anotherModesCombinationIsAConflict()
    {
        AlertCatcher alerts;
        record(CaptureMode::region, { XK_Alt_L, XK_Shift_L, XK_Super_L, XK_4 });
        QTRY_COMPARE(alerts.alerts().size(), 1);
        QCOMPARE(alerts.alerts()[0].mid(1),
            (QStringList { u"Kısayol zaten kullanılıyor"_s,
                u"Diğer yakalama işlemleri için farklı bir tuş birleşimi seç."_s, u"Tamam"_s }));
        QCOMPARE(m_preferences->shortcut(CaptureMode::region).display(), u"⌥⇧⌘3"_s);
        QCOMPARE(m_preferences->shortcut(CaptureMode::window).display(), u"⌥⇧⌘4"_s);
        QCOMPARE(m_settings->recorder(CaptureMode::region)->text(), u"⌥⇧⌘3"_s);
        QCOMPARE(m_changes, 0);
        QVERIFY(fires({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_3 }, CaptureMode::region));
    }

    void theModesOwnCombinationIsNoConflict()
    {
        AlertCatcher alerts;
        record(CaptureMode::video, { XK_Alt_L, XK_Shift_L, XK_Super_L, XK_g });
        QVERIFY(alerts.alerts().isEmpty());
        QCOMPARE(m_changes, 1);
        QVERIFY(fires({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_g }, CaptureMode::video));
    }

    void aHeldCombinationIsRefusedAndTheOldOneWorksAgain()
    {
        // Another client holds Ctrl+Super+K, but only with every lock key off; typed with Num Lock
        // lit, the combination still reaches the recorder, and registering it then fails.
        const xcb_keycode_t k = keycodeOf(XK_k);
        XcbReply<xcb_generic_error_t> refused(xcb_request_check(m_other.get(),
            xcb_grab_key_checked(m_other.get(), 1, m_other.root(), XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4, k,
                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        QVERIFY(!refused);
        QVERIFY(m_input.typeCombination({ XK_Num_Lock }));
        AlertCatcher alerts;
        record(CaptureMode::screen, { XK_Control_L, XK_Super_L, XK_k });
        QVERIFY(m_input.typeCombination({ XK_Num_Lock }));
        xcb_ungrab_key(m_other.get(), k, m_other.root(), XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_4);
        m_other.flush();
        QTRY_COMPARE(alerts.alerts().size(), 1);
        QCOMPARE(alerts.alerts()[0][1], u"Kısayol atanamadı"_s);
        QCOMPARE(alerts.alerts()[0][2],
            u"Bu birleşim sistem veya başka bir uygulama tarafından kullanılıyor olabilir. Farklı bir birleşim seç. Hata: -10"_s);
        QCOMPARE(m_preferences->shortcut(CaptureMode::screen).display(), u"⌥⇧⌘5"_s);
        QCOMPARE(m_settings->recorder(CaptureMode::screen)->text(), u"⌥⇧⌘5"_s);
        QCOMPARE(m_changes, 0);
        QVERIFY(fires({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 }, CaptureMode::screen));
    }

    void restoringDefaultsStopsARecordingFirstAndRefreshesOnce()
    {
        record(CaptureMode::window, { XK_Control_L, XK_Super_L, XK_w });
        QCOMPARE(m_settings->recorder(CaptureMode::window)->text(), u"⌃⌘W"_s);
        m_changes = 0;
        m_settings->recorder(CaptureMode::region)->begin();
        QCOMPARE(m_hotKeys->registeredCount(), 0); // nothing fires while recording
        m_settings->reset();
        QVERIFY(!m_settings->recorder(CaptureMode::region)->isRecording());
        QCOMPARE(m_changes, 1);
        QCOMPARE(m_settings->recorder(CaptureMode::window)->text(), u"⌥⇧⌘4"_s);
        QCOMPARE(m_settings->recorder(CaptureMode::region)->text(), u"⌥⇧⌘3"_s);
        QCOMPARE(
            m_preferences->shortcut(CaptureMode::window), Shortcut::defaultShortcut(CaptureMode::window));
        QCOMPARE(m_hotKeys->registeredCount(), 4);
        QVERIFY(fires({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_4 }, CaptureMode::window));
    }

    void restoringDefaultsReportsTheOnesThatCannotBeUsed()
    {
        record(CaptureMode::window, { XK_Control_L, XK_Super_L, XK_w });
        X11GlobalKeys holder(m_other.get(), m_other.root());
        QCOMPARE(holder.grab(21, 2816, 7), 0);
        m_other.flush();
        AlertCatcher alerts;
        m_settings->reset();
        QCOMPARE(alerts.alerts().size(), 1);
        QCOMPARE(alerts.alerts()[0].mid(1),
            (QStringList { u"Bazı kısayollar kullanılamıyor"_s, u"Pencere yakala: ⌥⇧⌘4"_s, u"Tamam"_s }));
        QCOMPARE(
            m_preferences->shortcut(CaptureMode::window), Shortcut::defaultShortcut(CaptureMode::window));
    }

    void onlyOneRecorderRecordsAtATime()
    {
        m_settings->recorder(CaptureMode::region)->begin();
        m_settings->recorder(CaptureMode::window)->begin();
        QVERIFY(!m_settings->recorder(CaptureMode::region)->isRecording());
        QVERIFY(m_settings->recorder(CaptureMode::window)->isRecording());
        QCOMPARE(m_settings->recorder(CaptureMode::region)->text(), u"⌥⇧⌘3"_s);
        QCOMPARE(m_hotKeys->registeredCount(), 0);
    }

    void closingWhileRecordingLeavesEveryShortcutRegistered()
    {
        m_settings->recorder(CaptureMode::video)->begin();
        QCOMPARE(m_hotKeys->registeredCount(), 0);
        m_settings->close();
        QCOMPARE(m_hotKeys->registeredCount(), 4);
        QVERIFY(!m_settings->recorder(CaptureMode::video)->isRecording());
        QVERIFY(fires({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_g }, CaptureMode::video));
    }
};

QTEST_MAIN(TestSettingsController)
#include "tst_settingscontroller.moc"
