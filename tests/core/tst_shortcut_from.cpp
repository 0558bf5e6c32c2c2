#include "Shortcut.h"

#include <QKeyEvent>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

namespace {

// X11 modifier state bits, as the native modifiers of a key event carry them.
constexpr quint32 shiftMask = 1 << 0;
constexpr quint32 lockMask = 1 << 1;
constexpr quint32 controlMask = 1 << 2;
constexpr quint32 mod1Mask = 1 << 3; // Alt
constexpr quint32 mod2Mask = 1 << 4; // Num Lock
constexpr quint32 mod4Mask = 1 << 6; // Super

std::optional<Shortcut> press(int key, Qt::KeyboardModifiers modifiers, quint32 keysym,
    quint32 nativeModifiers, const QString& text = QString())
{
    const QKeyEvent event(QEvent::KeyPress, key, modifiers, 0, keysym, nativeModifiers, text);
    return Shortcut::from(event);
}

} // namespace

class TestShortcutFrom : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void superShiftLetterWithCapsLock();
    void shiftAloneIsNoCombination();
    void controlAltSpace();
    void bareModifierKeys_data();
    void bareModifierKeys();
    void keysWithoutFace_data();
    void keysWithoutFace();
    void keyWithoutFaceTakesPrintableText();
    void keypadDigitsAndDroppedFlags();
    void shiftedSymbolFindsItsKey();
    void allModifiersInOrder();
    void defaultCombinationPressed();
    void keysymBeforeQtKey();
    void noPortableNumber();
    void namedKeyLabels_data();
    void namedKeyLabels();
};
void TestShortcutFrom::superShiftLetterWithCapsLock()
{
    // With Caps Lock on, Shift+A may give either case, depending on the layout's options.
    for (quint32 keysym : { quint32(XK_A), quint32(XK_a) }) {
        const auto shortcut = press(Qt::Key_A, Qt::MetaModifier | Qt::ShiftModifier, keysym,
            mod4Mask | shiftMask | lockMask, keysym == XK_A ? u"A"_s : u"a"_s);
        QVERIFY(shortcut.has_value());
        QCOMPARE(shortcut->keyCode, 0u);
        QCOMPARE(shortcut->modifiers, 768u);
        QCOMPARE(shortcut->keyLabel, u"A"_s);
    }
}

void TestShortcutFrom::shiftAloneIsNoCombination()
{
    QVERIFY(!press(Qt::Key_F5, Qt::ShiftModifier, XK_F5, shiftMask).has_value());
    QVERIFY(!press(Qt::Key_A, Qt::ShiftModifier, XK_A, shiftMask, u"A"_s).has_value());
    QVERIFY(!press(Qt::Key_A, Qt::NoModifier, XK_a, 0, u"a"_s).has_value());
    QVERIFY(!press(Qt::Key_1, Qt::KeypadModifier, XK_KP_1, mod2Mask, u"1"_s).has_value());
}

void TestShortcutFrom::controlAltSpace()
{
    const auto shortcut = press(
        Qt::Key_Space, Qt::ControlModifier | Qt::AltModifier, XK_space, controlMask | mod1Mask, u" "_s);
    QVERIFY(shortcut.has_value());
    QCOMPARE(shortcut->keyCode, 49u);
    QCOMPARE(shortcut->modifiers, 6144u);
    QCOMPARE(shortcut->keyLabel, u"Boşluk"_s);
    QCOMPARE(shortcut->display(), u"⌃⌥Boşluk"_s);
}

void TestShortcutFrom::bareModifierKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("Super_L") << int(Qt::Key_Super_L) << quint32(XK_Super_L)
                             << Qt::KeyboardModifiers(Qt::MetaModifier);
    QTest::newRow("Super_R") << int(Qt::Key_Super_R) << quint32(XK_Super_R)
                             << Qt::KeyboardModifiers(Qt::MetaModifier);
    QTest::newRow("Meta") << int(Qt::Key_Meta) << quint32(XK_Meta_L)
                          << Qt::KeyboardModifiers(Qt::MetaModifier);
    QTest::newRow("Control") << int(Qt::Key_Control) << quint32(XK_Control_L)
                             << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("Alt") << int(Qt::Key_Alt) << quint32(XK_Alt_L) << Qt::KeyboardModifiers(Qt::AltModifier);
    QTest::newRow("Shift with Ctrl") << int(Qt::Key_Shift) << quint32(XK_Shift_R)
                                     << (Qt::ControlModifier | Qt::ShiftModifier);
    QTest::newRow("Caps Lock with Alt")
        << int(Qt::Key_CapsLock) << quint32(XK_Caps_Lock) << Qt::KeyboardModifiers(Qt::AltModifier);
    QTest::newRow("AltGr") << int(Qt::Key_AltGr) << quint32(XK_ISO_Level3_Shift)
                           << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("Hyper") << int(Qt::Key_Hyper_L) << quint32(XK_Hyper_L)
                           << Qt::KeyboardModifiers(Qt::MetaModifier);
    // A synthetic press that only carries the keysym.
    QTest::newRow("keysym only") << 0 << quint32(XK_Super_R) << Qt::KeyboardModifiers(Qt::MetaModifier);
    QTest::newRow("Qt key only") << int(Qt::Key_Super_L) << 0u << Qt::KeyboardModifiers(Qt::MetaModifier);
}

void TestShortcutFrom::bareModifierKeys()
{
    QFETCH(int, key);
    QFETCH(quint32, keysym);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QVERIFY(!press(key, modifiers, keysym, mod4Mask).has_value());
}

void TestShortcutFrom::keysWithoutFace_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<QString>("text");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("label");
    QTest::newRow("F13") << int(Qt::Key_F13) << quint32(XK_F13) << QString()
                         << Qt::KeyboardModifiers(Qt::ControlModifier) << 105u << u"Tuş 105"_s;
    QTest::newRow("F20") << int(Qt::Key_F20) << quint32(XK_F20) << QString()
                         << Qt::KeyboardModifiers(Qt::ControlModifier) << 90u << u"Tuş 90"_s;
    QTest::newRow("keypad Enter") << int(Qt::Key_Enter) << quint32(XK_KP_Enter) << u"\r"_s
                                  << (Qt::ControlModifier | Qt::KeypadModifier) << 76u << u"Tuş 76"_s;
    QTest::newRow("Escape") << int(Qt::Key_Escape) << quint32(XK_Escape) << u"\x1b"_s
                            << Qt::KeyboardModifiers(Qt::AltModifier) << 53u << u"Tuş 53"_s;
    QTest::newRow("Insert") << int(Qt::Key_Insert) << quint32(XK_Insert) << QString()
                            << Qt::KeyboardModifiers(Qt::MetaModifier) << 114u << u"Tuş 114"_s;
    QTest::newRow("Num Lock") << int(Qt::Key_NumLock) << quint32(XK_Num_Lock) << QString()
                              << Qt::KeyboardModifiers(Qt::ControlModifier) << 71u << u"Tuş 71"_s;
}

void TestShortcutFrom::keysWithoutFace()
{
    QFETCH(int, key);
    QFETCH(quint32, keysym);
    QFETCH(QString, text);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(quint32, keyCode);
    QFETCH(QString, label);
    const auto shortcut = press(key, modifiers, keysym, 0, text);
    QVERIFY(shortcut.has_value());
    QCOMPARE(shortcut->keyCode, keyCode);
    QCOMPARE(shortcut->keyLabel, label);
}

void TestShortcutFrom::keyWithoutFaceTakesPrintableText()
{
    const auto shortcut = press(Qt::Key_F14, Qt::ControlModifier, XK_F14, controlMask, u"ş"_s);
    QVERIFY(shortcut.has_value());
    QCOMPARE(shortcut->keyCode, 107u);
    QCOMPARE(shortcut->keyLabel, u"Ş"_s);
    // White space is no face.
    QCOMPARE(press(Qt::Key_F14, Qt::ControlModifier, XK_F14, controlMask, u" "_s)->keyLabel, u"Tuş 107"_s);
}

void TestShortcutFrom::keypadDigitsAndDroppedFlags()
{
    const Qt::KeyboardModifiers keypadControl = Qt::ControlModifier | Qt::KeypadModifier;
    const quint32 codes[10] = { 82, 83, 84, 85, 86, 87, 88, 89, 91, 92 };
    for (int n = 0; n < 10; ++n) {
        const auto viaKeysym = press(
            Qt::Key_0 + n, keypadControl, XK_KP_0 + quint32(n), controlMask | mod2Mask, QString::number(n));
        QVERIFY(viaKeysym.has_value());
        QCOMPARE(viaKeysym->keyCode, codes[n]);
        QCOMPARE(viaKeysym->modifiers, 4096u);
        QCOMPARE(viaKeysym->keyLabel, QString::number(n));
        // Without a keysym the keypad flag of the Qt key decides.
        const auto viaQtKey = press(Qt::Key_0 + n, keypadControl, 0, 0);
        QVERIFY(viaQtKey.has_value());
        QCOMPARE(viaQtKey->keyCode, codes[n]);
    }
    const auto grouped = press(
        Qt::Key_G, Qt::AltModifier | Qt::GroupSwitchModifier | Qt::KeypadModifier, XK_g, mod1Mask, u"g"_s);
    QVERIFY(grouped.has_value());
    QCOMPARE(grouped->modifiers, 2048u);
    QCOMPARE(grouped->keyLabel, u"G"_s);
}

void TestShortcutFrom::shiftedSymbolFindsItsKey()
{
    const auto shortcut = press(
        Qt::Key_NumberSign, Qt::AltModifier | Qt::ShiftModifier, XK_numbersign, mod1Mask | shiftMask, u"#"_s);
    QVERIFY(shortcut.has_value());
    QCOMPARE(shortcut->keyCode, 20u);
    QCOMPARE(shortcut->modifiers, 2560u);
    QCOMPARE(shortcut->keyLabel, u"3"_s);
}

void TestShortcutFrom::allModifiersInOrder()
{
    const auto shortcut
        = press(Qt::Key_G, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier, XK_G,
            controlMask | mod1Mask | shiftMask | mod4Mask, u"G"_s);
    QVERIFY(shortcut.has_value());
    QCOMPARE(shortcut->modifiers, 6912u);
    QCOMPARE(shortcut->display(), u"⌃⌥⇧⌘G"_s);
}

void TestShortcutFrom::defaultCombinationPressed()
{
    const auto shortcut = press(Qt::Key_NumberSign, Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier,
        XK_numbersign, mod1Mask | shiftMask | mod4Mask, u"#"_s);
    QVERIFY(shortcut.has_value());
    QVERIFY(*shortcut == Shortcut::defaultShortcut(CaptureMode::region));
    QCOMPARE(shortcut->keyLabel, u"3"_s);
    QCOMPARE(shortcut->display(), u"⌥⇧⌘3"_s);
}

void TestShortcutFrom::keysymBeforeQtKey()
{
    // A layout may give the key a symbol that Qt names differently; the keysym wins.
    QCOMPARE(press(Qt::Key_Y, Qt::ControlModifier, XK_z, controlMask, u"z"_s)->keyCode, 6u);
    // Without a keysym, Qt's key is used.
    QCOMPARE(press(Qt::Key_Y, Qt::ControlModifier, 0, 0, u"y"_s)->keyCode, 16u);
    QCOMPARE(press(Qt::Key_PageUp, Qt::ControlModifier, 0, 0)->keyLabel, u"PgUp"_s);
}

void TestShortcutFrom::noPortableNumber()
{
    QVERIFY(!press(Qt::Key_Udiaeresis, Qt::ControlModifier, XK_udiaeresis, controlMask, u"ü"_s).has_value());
    QVERIFY(!press(Qt::Key_Print, Qt::ControlModifier, XK_Print, controlMask).has_value());
    QVERIFY(!press(0, Qt::ControlModifier, 0, 0).has_value());
}

void TestShortcutFrom::namedKeyLabels_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("label");
    QTest::newRow("Return") << int(Qt::Key_Return) << quint32(XK_Return) << 36u << u"↩"_s;
    QTest::newRow("Tab") << int(Qt::Key_Tab) << quint32(XK_Tab) << 48u << u"⇥"_s;
    QTest::newRow("Shift+Tab") << int(Qt::Key_Backtab) << quint32(XK_ISO_Left_Tab) << 48u << u"⇥"_s;
    QTest::newRow("Space") << int(Qt::Key_Space) << quint32(XK_space) << 49u << u"Boşluk"_s;
    QTest::newRow("BackSpace") << int(Qt::Key_Backspace) << quint32(XK_BackSpace) << 51u << u"⌫"_s;
    QTest::newRow("Delete") << int(Qt::Key_Delete) << quint32(XK_Delete) << 117u << u"⌦"_s;
    QTest::newRow("Left") << int(Qt::Key_Left) << quint32(XK_Left) << 123u << u"←"_s;
    QTest::newRow("Right") << int(Qt::Key_Right) << quint32(XK_Right) << 124u << u"→"_s;
    QTest::newRow("Down") << int(Qt::Key_Down) << quint32(XK_Down) << 125u << u"↓"_s;
    QTest::newRow("Up") << int(Qt::Key_Up) << quint32(XK_Up) << 126u << u"↑"_s;
    QTest::newRow("Home") << int(Qt::Key_Home) << quint32(XK_Home) << 115u << u"Home"_s;
    QTest::newRow("End") << int(Qt::Key_End) << quint32(XK_End) << 119u << u"End"_s;
    QTest::newRow("PgUp") << int(Qt::Key_PageUp) << quint32(XK_Prior) << 116u << u"PgUp"_s;
    QTest::newRow("PgDn") << int(Qt::Key_PageDown) << quint32(XK_Next) << 121u << u"PgDn"_s;
    const quint32 codes[12] = { 122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111 };
    for (int n = 0; n < 12; ++n) {
        QTest::addRow("F%d", n + 1) << int(Qt::Key_F1) + n << quint32(XK_F1) + quint32(n) << codes[n]
                                    << u"F"_s + QString::number(n + 1);
    }
}

void TestShortcutFrom::namedKeyLabels()
{
    QFETCH(int, key);
    QFETCH(quint32, keysym);
    QFETCH(quint32, keyCode);
    QFETCH(QString, label);
    const auto shortcut
        = press(key, Qt::ControlModifier | Qt::ShiftModifier, keysym, controlMask | shiftMask);
    QVERIFY(shortcut.has_value());
    QCOMPARE(shortcut->keyCode, keyCode);
    QCOMPARE(shortcut->modifiers, 4608u);
    QCOMPARE(shortcut->keyLabel, label);
}

QTEST_GUILESS_MAIN(TestShortcutFrom)
#include "tst_shortcut_from.moc"
