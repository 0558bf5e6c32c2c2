#include "Beeper.h"
#include "ShortcutRecorder.h"
#include "WindowHelpers.h"
#include "X11Connection.h"
#include "X11Input.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

// The recorder in a real window, typed at with real keys.
class TestShortcutRecorder : public QObject {
    Q_OBJECT

    X11Connection m_connection;
    X11Input m_input { m_connection };
    std::unique_ptr<QWidget> m_window;
    ShortcutRecorder* m_recorder = nullptr;
    QLineEdit* m_field = nullptr;
    QStringList m_calls;

    void type(const QList<quint32>& keysyms) { QVERIFY(m_input.typeCombination(keysyms)); }

    void clickRecorder()
    {
        const QPoint centre = m_recorder->mapToGlobal(m_recorder->rect().center());
        m_input.click(centre);
    }

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(m_window.get());
        m_recorder = new ShortcutRecorder(Shortcut::defaultShortcut(CaptureMode::screen), m_window.get());
        m_field = new QLineEdit(m_window.get());
        layout->addWidget(m_recorder);
        layout->addWidget(m_field);
        WindowHelpers::addWindowActions(m_window.get());
        m_calls.clear();
        m_recorder->onBegin = [this] { m_calls << u"begin"_s; };
        m_recorder->onEnd = [this] { m_calls << u"end"_s; };
        m_recorder->onRecord = [this](const Shortcut& s) {
            m_calls << u"record %1 %2 %3"_s.arg(s.display()).arg(s.keyCode).arg(s.modifiers);
        };
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_field->setFocus();
        QCOMPARE(m_recorder->text(), u"⌥⇧⌘5"_s);
    }

    void cleanup() { m_window.reset(); }

    void aClickStartsRecording()
    {
        clickRecorder();
        QTRY_VERIFY(m_recorder->isRecording());
        QCOMPARE(m_recorder->text(), u"Tuşlara bas… (Esc: iptal)"_s);
        QCOMPARE(m_calls, QStringList { u"begin"_s });
    }

    void shiftAloneBeepsThenACommandCombinationIsRecorded()
    {
        m_recorder->begin();
        const int beeps = Beeper::count();
        type({ XK_Shift_L, XK_k });
        QTRY_COMPARE(Beeper::count(), beeps + 1);
        QVERIFY(m_recorder->isRecording());
        type({ XK_Super_L, XK_k });
        QTRY_VERIFY(!m_recorder->isRecording());
        QCOMPARE(m_calls, (QStringList { u"begin"_s, u"end"_s, u"record ⌘K 40 256"_s }));
        QCOMPARE(m_recorder->text(), u"⌥⇧⌘5"_s); // the owner sets the new title once it accepts it
        QCOMPARE(Beeper::count(), beeps + 1); // holding the modifiers was no attempt
        QVERIFY(m_field->text().isEmpty()); // no key reached the other controls
    }

    void theDefaultCombinationCanBeTypedWithItsShiftedDigit()
    {
        m_recorder->begin();
        type({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 });
        QTRY_VERIFY(!m_recorder->isRecording());
        QCOMPARE(m_calls.last(), u"record ⌥⇧⌘5 23 2816"_s);
    }

    void escapeCancels()
    {
        m_recorder->begin();
        type({ XK_Escape });
        QTRY_VERIFY(!m_recorder->isRecording());
        QCOMPARE(m_calls, (QStringList { u"begin"_s, u"end"_s }));
        QCOMPARE(m_recorder->text(), u"⌥⇧⌘5"_s);
        // Escape with a modifier is no shortcut either.
        m_recorder->begin();
        type({ XK_Control_L, XK_Escape });
        QTRY_VERIFY(!m_recorder->isRecording());
        QCOMPARE(m_calls.size(), 4);
    }

    void aSecondClickCancels()
    {
        clickRecorder();
        QTRY_VERIFY(m_recorder->isRecording());
        clickRecorder();
        QTRY_VERIFY(!m_recorder->isRecording());
        QCOMPARE(m_calls, (QStringList { u"begin"_s, u"end"_s }));
        QCOMPARE(m_recorder->text(), u"⌥⇧⌘5"_s);
    }

    void windowShortcutsAreRecordedInsteadOfFiring()
    {
        struct QuitCounter : QObject {
            int quits = 0;
            bool eventFilter(QObject* watched, QEvent* event) override
            {
                const bool quit = watched == QCoreApplication::instance() && event->type() == QEvent::Quit;
                quits += quit ? 1 : 0;
                return quit;
            }
        } counter;
        QCoreApplication::instance()->installEventFilter(&counter);
        m_recorder->begin();
        type({ XK_Control_L, XK_q });
        QTRY_VERIFY(!m_recorder->isRecording());
        QTest::qWait(100);
        QCoreApplication::instance()->removeEventFilter(&counter);
        QCOMPARE(counter.quits, 0);
        QCOMPARE(m_calls.last(), u"record ⌃Q 12 4096"_s);
    }

    void losingTheKeyboardToAnotherApplicationEndsRecording()
    {
        m_recorder->begin();
        // Another client's window takes the input focus.
        const xcb_window_t other = xcb_generate_id(m_connection.get());
        const uint32_t values[] = { 0x00ff00 };
        xcb_create_window(m_connection.get(), XCB_COPY_FROM_PARENT, other, m_connection.root(), 100, 100, 200,
            200, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, values);
        xcb_map_window(m_connection.get(), other);
        m_connection.flush();
        QTest::qWait(200);
        xcb_set_input_focus(m_connection.get(), XCB_INPUT_FOCUS_POINTER_ROOT, other, XCB_CURRENT_TIME);
        m_connection.flush();
        QTRY_VERIFY(!m_recorder->isRecording());
        QCOMPARE(m_calls, (QStringList { u"begin"_s, u"end"_s }));
        QCOMPARE(m_recorder->text(), u"⌥⇧⌘5"_s);
        xcb_destroy_window(m_connection.get(), other);
        m_connection.flush();
    }
};

QTEST_MAIN(TestShortcutRecorder)
#include "tst_shortcutrecorder.moc"
