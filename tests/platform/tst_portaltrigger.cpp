#include "PortalTrigger.h"
#include "Shortcut.h"

#include <QTest>

using namespace Qt::StringLiterals;

// Stored combinations in the portals' trigger syntax, as the desktop is asked for them.
class TestPortalTrigger : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void combinations_data()
    {
        QTest::addColumn<Shortcut>("shortcut");
        QTest::addColumn<QString>("trigger");
        QTest::newRow("region") << Shortcut::defaultShortcut(CaptureMode::region) << u"ALT+SHIFT+LOGO+3"_s;
        QTest::newRow("window") << Shortcut::defaultShortcut(CaptureMode::window) << u"ALT+SHIFT+LOGO+4"_s;
        QTest::newRow("screen") << Shortcut::defaultShortcut(CaptureMode::screen) << u"ALT+SHIFT+LOGO+5"_s;
        QTest::newRow("video") << Shortcut::defaultShortcut(CaptureMode::video) << u"ALT+SHIFT+LOGO+g"_s;
        QTest::newRow("all four") << Shortcut { 0, 0x1b00, u"A"_s } << u"CTRL+ALT+SHIFT+LOGO+a"_s;
        QTest::newRow("control") << Shortcut { 49, Shortcut::controlKey, {} } << u"CTRL+space"_s;
        QTest::newRow("punctuation") << Shortcut { 27, Shortcut::cmdKey, u"-"_s } << u"LOGO+minus"_s;
        QTest::newRow("function key") << Shortcut { 122, Shortcut::optionKey, {} } << u"ALT+F1"_s;
        QTest::newRow("keypad") << Shortcut { 83, Shortcut::controlKey, u"1"_s } << u"CTRL+KP_1"_s;
        QTest::newRow("unknown key") << Shortcut { 10, Shortcut::controlKey, {} } << QString();
        QTest::newRow("Fn") << Shortcut { 63, Shortcut::controlKey, {} } << QString();
    }

    void combinations()
    {
        QFETCH(Shortcut, shortcut);
        QFETCH(QString, trigger);
        QCOMPARE(PortalTrigger::fromShortcut(shortcut.keyCode, shortcut.modifiers), trigger);
    }
};

QTEST_GUILESS_MAIN(TestPortalTrigger)
#include "tst_portaltrigger.moc"
