#include "KeyTable.h"

#include <QSet>
#include <QString>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

namespace {

QString faceOf(quint32 keyCode)
{
    const std::optional<KeyInfo> key = KeyTable::byKeyCode(keyCode);
    return key && key->face ? QString::fromUtf16(key->face) : QString();
}

} // namespace

class TestKeyTable : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keyCodesAreUnique();
    void keysymsAndQtKeysAreUniquePerKey();
    void everyRowRoundTripsThroughItsKeysym();
    void everyRowRoundTripsThroughItsQtKey();
    void onlyModifierRowsLackAKeysymOrQtKey();
    void lettersCoverTheAnsiLayout_data();
    void lettersCoverTheAnsiLayout();
    void digitsAndPunctuation_data();
    void digitsAndPunctuation();
    void namedKeys_data();
    void namedKeys();
    void keypad_data();
    void keypad();
    void capitalsFindTheirLetter();
    void shiftedSymbolsFindTheirKey_data();
    void shiftedSymbolsFindTheirKey();
    void keypadWithNumLockOff();
    void unknownKeysGiveNothing();
    void modifierKeys();
};

void TestKeyTable::keyCodesAreUnique()
{
    QSet<quint32> seen;
    for (const KeyInfo& key : KeyTable::all()) {
        QVERIFY2(!seen.contains(key.keyCode), qPrintable(QString::number(key.keyCode)));
        seen.insert(key.keyCode);
        QVERIFY(key.keyCode <= 127);
    }
    QCOMPARE(seen.size(), qsizetype(KeyTable::all().size()));
}

void TestKeyTable::keysymsAndQtKeysAreUniquePerKey()
{
    QSet<quint32> keysyms;
    QSet<QPair<int, bool>> qtKeys;
    for (const KeyInfo& key : KeyTable::all()) {
        if (key.keysym != 0) {
            QVERIFY2(!keysyms.contains(key.keysym), qPrintable(QString::number(key.keyCode)));
            keysyms.insert(key.keysym);
        }
        if (key.qtKey != 0) {
            const QPair<int, bool> qt { key.qtKey, key.keypad };
            QVERIFY2(!qtKeys.contains(qt), qPrintable(QString::number(key.keyCode)));
            qtKeys.insert(qt);
        }
    }
}

void TestKeyTable::everyRowRoundTripsThroughItsKeysym()
{
    for (const KeyInfo& key : KeyTable::all()) {
        if (key.keysym == 0)
            continue;
        const std::optional<KeyInfo> byCode = KeyTable::byKeyCode(key.keyCode);
        QVERIFY(byCode.has_value());
        const std::optional<KeyInfo> back = KeyTable::byKeysym(byCode->keysym);
        QVERIFY2(back.has_value(), qPrintable(QString::number(key.keyCode)));
        QCOMPARE(back->keyCode, key.keyCode);
    }
}

void TestKeyTable::everyRowRoundTripsThroughItsQtKey()
{
    for (const KeyInfo& key : KeyTable::all()) {
        if (key.qtKey == 0)
            continue;
        const std::optional<KeyInfo> back = KeyTable::byQtKey(key.qtKey, key.keypad);
        QVERIFY2(back.has_value(), qPrintable(QString::number(key.keyCode)));
        QCOMPARE(back->keyCode, key.keyCode);
    }
}

void TestKeyTable::onlyModifierRowsLackAKeysymOrQtKey()
{
    for (const KeyInfo& key : KeyTable::all()) {
        if (key.keysym == 0 || key.qtKey == 0)
            QVERIFY2(KeyTable::isModifierKey(key.keyCode), qPrintable(QString::number(key.keyCode)));
    }
}

void TestKeyTable::lettersCoverTheAnsiLayout_data()
{
    QTest::addColumn<QString>("letter");
    QTest::addColumn<quint32>("keyCode");
    const struct {
        char letter;
        quint32 code;
    } letters[] = { { 'A', 0 }, { 'S', 1 }, { 'D', 2 }, { 'F', 3 }, { 'H', 4 }, { 'G', 5 }, { 'Z', 6 },
        { 'X', 7 }, { 'C', 8 }, { 'V', 9 }, { 'B', 11 }, { 'Q', 12 }, { 'W', 13 }, { 'E', 14 }, { 'R', 15 },
        { 'Y', 16 }, { 'T', 17 }, { 'O', 31 }, { 'U', 32 }, { 'I', 34 }, { 'P', 35 }, { 'L', 37 },
        { 'J', 38 }, { 'K', 40 }, { 'N', 45 }, { 'M', 46 } };
    QCOMPARE(std::size(letters), std::size_t { 26 });
    for (const auto& row : letters) {
        const QString letter = QString(QLatin1Char(row.letter));
        QTest::newRow(qPrintable(letter)) << letter << row.code;
    }
}

void TestKeyTable::lettersCoverTheAnsiLayout()
{
    QFETCH(QString, letter);
    QFETCH(quint32, keyCode);
    const char16_t upper = letter.at(0).unicode();
    const auto key = KeyTable::byKeysym(upper - u'A' + XK_a);
    QVERIFY(key.has_value());
    QCOMPARE(key->keyCode, keyCode);
    QCOMPARE(key->qtKey, int(Qt::Key_A) + (upper - u'A'));
    QVERIFY(!key->keypad);
    QCOMPARE(faceOf(keyCode), letter);
}

void TestKeyTable::digitsAndPunctuation_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<int>("qtKey");
    QTest::addColumn<QString>("face");
    QTest::newRow("1") << 18u << quint32(XK_1) << int(Qt::Key_1) << u"1"_s;
    QTest::newRow("2") << 19u << quint32(XK_2) << int(Qt::Key_2) << u"2"_s;
    QTest::newRow("3") << 20u << quint32(XK_3) << int(Qt::Key_3) << u"3"_s;
    QTest::newRow("4") << 21u << quint32(XK_4) << int(Qt::Key_4) << u"4"_s;
    QTest::newRow("6") << 22u << quint32(XK_6) << int(Qt::Key_6) << u"6"_s;
    QTest::newRow("5") << 23u << quint32(XK_5) << int(Qt::Key_5) << u"5"_s;
    QTest::newRow("=") << 24u << quint32(XK_equal) << int(Qt::Key_Equal) << u"="_s;
    QTest::newRow("9") << 25u << quint32(XK_9) << int(Qt::Key_9) << u"9"_s;
    QTest::newRow("7") << 26u << quint32(XK_7) << int(Qt::Key_7) << u"7"_s;
    QTest::newRow("-") << 27u << quint32(XK_minus) << int(Qt::Key_Minus) << u"-"_s;
    QTest::newRow("8") << 28u << quint32(XK_8) << int(Qt::Key_8) << u"8"_s;
    QTest::newRow("0") << 29u << quint32(XK_0) << int(Qt::Key_0) << u"0"_s;
    QTest::newRow("]") << 30u << quint32(XK_bracketright) << int(Qt::Key_BracketRight) << u"]"_s;
    QTest::newRow("[") << 33u << quint32(XK_bracketleft) << int(Qt::Key_BracketLeft) << u"["_s;
    QTest::newRow("'") << 39u << quint32(XK_apostrophe) << int(Qt::Key_Apostrophe) << u"'"_s;
    QTest::newRow(";") << 41u << quint32(XK_semicolon) << int(Qt::Key_Semicolon) << u";"_s;
    QTest::newRow("\\") << 42u << quint32(XK_backslash) << int(Qt::Key_Backslash) << u"\\"_s;
    QTest::newRow(",") << 43u << quint32(XK_comma) << int(Qt::Key_Comma) << u","_s;
    QTest::newRow("/") << 44u << quint32(XK_slash) << int(Qt::Key_Slash) << u"/"_s;
    QTest::newRow(".") << 47u << quint32(XK_period) << int(Qt::Key_Period) << u"."_s;
    QTest::newRow("`") << 50u << quint32(XK_grave) << int(Qt::Key_QuoteLeft) << u"`"_s;
}

void TestKeyTable::digitsAndPunctuation()
{
    QFETCH(quint32, keyCode);
    QFETCH(quint32, keysym);
    QFETCH(int, qtKey);
    QFETCH(QString, face);
    const auto key = KeyTable::byKeyCode(keyCode);
    QVERIFY(key.has_value());
    QCOMPARE(key->keysym, keysym);
    QCOMPARE(key->qtKey, qtKey);
    QVERIFY(!key->keypad);
    QCOMPARE(faceOf(keyCode), face);
}

void TestKeyTable::namedKeys_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<int>("qtKey");
    QTest::newRow("Return") << 36u << quint32(XK_Return) << int(Qt::Key_Return);
    QTest::newRow("Tab") << 48u << quint32(XK_Tab) << int(Qt::Key_Tab);
    QTest::newRow("Space") << 49u << quint32(XK_space) << int(Qt::Key_Space);
    QTest::newRow("BackSpace") << 51u << quint32(XK_BackSpace) << int(Qt::Key_Backspace);
    QTest::newRow("Escape") << 53u << quint32(XK_Escape) << int(Qt::Key_Escape);
    QTest::newRow("Insert") << 114u << quint32(XK_Insert) << int(Qt::Key_Insert);
    QTest::newRow("Home") << 115u << quint32(XK_Home) << int(Qt::Key_Home);
    QTest::newRow("Page Up") << 116u << quint32(XK_Prior) << int(Qt::Key_PageUp);
    QTest::newRow("Delete") << 117u << quint32(XK_Delete) << int(Qt::Key_Delete);
    QTest::newRow("End") << 119u << quint32(XK_End) << int(Qt::Key_End);
    QTest::newRow("Page Down") << 121u << quint32(XK_Next) << int(Qt::Key_PageDown);
    QTest::newRow("Left") << 123u << quint32(XK_Left) << int(Qt::Key_Left);
    QTest::newRow("Right") << 124u << quint32(XK_Right) << int(Qt::Key_Right);
    QTest::newRow("Down") << 125u << quint32(XK_Down) << int(Qt::Key_Down);
    QTest::newRow("Up") << 126u << quint32(XK_Up) << int(Qt::Key_Up);
    const quint32 functionKeys[20]
        = { 122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111, 105, 107, 113, 106, 64, 79, 80, 90 };
    for (int n = 0; n < 20; ++n) {
        QTest::addRow("F%d", n + 1) << functionKeys[n] << quint32(XK_F1 + n) << int(Qt::Key_F1) + n;
    }
}

void TestKeyTable::namedKeys()
{
    QFETCH(quint32, keyCode);
    QFETCH(quint32, keysym);
    QFETCH(int, qtKey);
    const auto key = KeyTable::byKeyCode(keyCode);
    QVERIFY(key.has_value());
    QCOMPARE(key->keysym, keysym);
    QCOMPARE(key->qtKey, qtKey);
    QVERIFY(!key->keypad);
    // Their labels come from elsewhere, never from a face.
    QVERIFY(key->face == nullptr);
}

void TestKeyTable::keypad_data()
{
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<quint32>("keysym");
    QTest::addColumn<int>("qtKey");
    QTest::addColumn<QString>("face");
    QTest::newRow(".") << 65u << quint32(XK_KP_Decimal) << int(Qt::Key_Period) << u"."_s;
    QTest::newRow("*") << 67u << quint32(XK_KP_Multiply) << int(Qt::Key_Asterisk) << u"*"_s;
    QTest::newRow("+") << 69u << quint32(XK_KP_Add) << int(Qt::Key_Plus) << u"+"_s;
    QTest::newRow("Clear") << 71u << quint32(XK_Num_Lock) << int(Qt::Key_NumLock) << QString();
    QTest::newRow("/") << 75u << quint32(XK_KP_Divide) << int(Qt::Key_Slash) << u"/"_s;
    QTest::newRow("Enter") << 76u << quint32(XK_KP_Enter) << int(Qt::Key_Enter) << QString();
    QTest::newRow("-") << 78u << quint32(XK_KP_Subtract) << int(Qt::Key_Minus) << u"-"_s;
    QTest::newRow("=") << 81u << quint32(XK_KP_Equal) << int(Qt::Key_Equal) << u"="_s;
    const quint32 digits[10] = { 82, 83, 84, 85, 86, 87, 88, 89, 91, 92 };
    for (int n = 0; n < 10; ++n) {
        QTest::addRow("%d", n) << digits[n] << quint32(XK_KP_0 + n) << int(Qt::Key_0) + n
                               << QString::number(n);
    }
}

void TestKeyTable::keypad()
{
    QFETCH(quint32, keyCode);
    QFETCH(quint32, keysym);
    QFETCH(int, qtKey);
    QFETCH(QString, face);
    const auto key = KeyTable::byKeyCode(keyCode);
    QVERIFY(key.has_value());
    QCOMPARE(key->keysym, keysym);
    QCOMPARE(key->qtKey, qtKey);
    QVERIFY(key->keypad);
    QCOMPARE(faceOf(keyCode), face);
    QCOMPARE(KeyTable::byKeysym(keysym)->keyCode, keyCode);
    QCOMPARE(KeyTable::byQtKey(qtKey, true)->keyCode, keyCode);
}

void TestKeyTable::capitalsFindTheirLetter()
{
    for (quint32 keysym = XK_A; keysym <= XK_Z; ++keysym) {
        const auto upper = KeyTable::byKeysym(keysym);
        const auto lower = KeyTable::byKeysym(keysym - XK_A + XK_a);
        QVERIFY(upper.has_value());
        QVERIFY(lower.has_value());
        QCOMPARE(upper->keyCode, lower->keyCode);
        QCOMPARE(lower->keysym, keysym - XK_A + XK_a);
    }
}

void TestKeyTable::shiftedSymbolsFindTheirKey_data()
{
    QTest::addColumn<quint32>("symbol");
    QTest::addColumn<quint32>("keyCode");
    const char* shifted = "~!@#$%^&*()_+{}|:\"<>?";
    const char* plain = "`1234567890-=[]\\;',./";
    for (int i = 0; shifted[i]; ++i) {
        const auto key = KeyTable::byKeysym(quint32(uchar(plain[i])));
        QVERIFY(key.has_value());
        QTest::addRow("%c", shifted[i]) << quint32(uchar(shifted[i])) << key->keyCode;
    }
}

void TestKeyTable::shiftedSymbolsFindTheirKey()
{
    QFETCH(quint32, symbol);
    QFETCH(quint32, keyCode);
    // ASCII keysyms and Qt keys share their values.
    QCOMPARE(KeyTable::byKeysym(symbol)->keyCode, keyCode);
    QCOMPARE(KeyTable::byQtKey(int(symbol), false)->keyCode, keyCode);
}

void TestKeyTable::keypadWithNumLockOff()
{
    QCOMPARE(KeyTable::byKeysym(XK_KP_Home)->keyCode, 89u);
    QCOMPARE(KeyTable::byKeysym(XK_KP_Insert)->keyCode, 82u);
    QCOMPARE(KeyTable::byKeysym(XK_KP_Prior)->keyCode, 92u);
    QCOMPARE(KeyTable::byKeysym(XK_KP_Delete)->keyCode, 65u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_Home, true)->keyCode, 89u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_Clear, true)->keyCode, 87u);
    // Without the keypad flag the same Qt key is the navigation key.
    QCOMPARE(KeyTable::byQtKey(Qt::Key_Home, false)->keyCode, 115u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_8, false)->keyCode, 28u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_8, true)->keyCode, 91u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_Enter, false)->keyCode, 76u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_Asterisk, false)->keyCode, 28u);
    QCOMPARE(KeyTable::byQtKey(Qt::Key_Backtab, false)->keyCode, 48u);
    QCOMPARE(KeyTable::byKeysym(XK_ISO_Left_Tab)->keyCode, 48u);
}

void TestKeyTable::unknownKeysGiveNothing()
{
    QVERIFY(!KeyTable::byKeyCode(10).has_value());
    QVERIFY(!KeyTable::byKeyCode(52).has_value());
    QVERIFY(!KeyTable::byKeyCode(127).has_value());
    QVERIFY(!KeyTable::byKeyCode(1000).has_value());
    QVERIFY(!KeyTable::byKeysym(0).has_value());
    QVERIFY(!KeyTable::byKeysym(XK_udiaeresis).has_value());
    QVERIFY(!KeyTable::byKeysym(XK_Print).has_value());
    QVERIFY(!KeyTable::byQtKey(0, false).has_value());
    QVERIFY(!KeyTable::byQtKey(Qt::Key_unknown, false).has_value());
    QVERIFY(!KeyTable::byQtKey(Qt::Key_Udiaeresis, false).has_value());
    QVERIFY(!KeyTable::byQtKey(Qt::Key_Print, false).has_value());
}

void TestKeyTable::modifierKeys()
{
    for (quint32 code = 0; code < 130; ++code)
        QCOMPARE(KeyTable::isModifierKey(code), code >= 54 && code <= 63);
    for (quint32 code = 54; code <= 63; ++code)
        QVERIFY(KeyTable::byKeyCode(code).has_value());
    QCOMPARE(KeyTable::byKeysym(XK_Super_L)->keyCode, 55u);
    QCOMPARE(KeyTable::byKeysym(XK_Super_R)->keyCode, 54u);
    QCOMPARE(KeyTable::byKeysym(XK_Shift_L)->keyCode, 56u);
    QCOMPARE(KeyTable::byKeysym(XK_Caps_Lock)->keyCode, 57u);
    QCOMPARE(KeyTable::byKeysym(XK_Alt_L)->keyCode, 58u);
    QCOMPARE(KeyTable::byKeysym(XK_Control_L)->keyCode, 59u);
    QCOMPARE(KeyTable::byKeysym(XK_Shift_R)->keyCode, 60u);
    QCOMPARE(KeyTable::byKeysym(XK_Alt_R)->keyCode, 61u);
    QCOMPARE(KeyTable::byKeysym(XK_Control_R)->keyCode, 62u);
}

QTEST_GUILESS_MAIN(TestKeyTable)
#include "tst_keytable.moc"
