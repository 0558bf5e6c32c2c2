#include "Shortcut.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

class TestShortcut : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void defaults_data();
    void defaults();
    void displayOrder_data();
    void displayOrder();
    void equalityIgnoresLabel();
    void jsonHasExactlyThreeKeys();
    void jsonRoundTrip_data();
    void jsonRoundTrip();
    void jsonAcceptsIntegralNumbersAndExtraKeys();
    void jsonRejects_data();
    void jsonRejects();
};

void TestShortcut::defaults_data()
{
    QTest::addColumn<CaptureMode>("mode");
    QTest::addColumn<quint32>("keyCode");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("display");
    QTest::newRow("region") << CaptureMode::region << 20u << u"3"_s << u"⌥⇧⌘3"_s;
    QTest::newRow("window") << CaptureMode::window << 21u << u"4"_s << u"⌥⇧⌘4"_s;
    QTest::newRow("screen") << CaptureMode::screen << 23u << u"5"_s << u"⌥⇧⌘5"_s;
    QTest::newRow("video") << CaptureMode::video << 5u << u"G"_s << u"⌥⇧⌘G"_s;
}

void TestShortcut::defaults()
{
    QFETCH(CaptureMode, mode);
    QFETCH(quint32, keyCode);
    QFETCH(QString, label);
    QFETCH(QString, display);
    const Shortcut shortcut = Shortcut::defaultShortcut(mode);
    QCOMPARE(shortcut.keyCode, keyCode);
    QCOMPARE(shortcut.modifiers, 2816u);
    QCOMPARE(shortcut.modifiers, Shortcut::cmdKey | Shortcut::shiftKey | Shortcut::optionKey);
    QCOMPARE(shortcut.keyLabel, label);
    QCOMPARE(shortcut.display(), display);
}

void TestShortcut::displayOrder_data()
{
    QTest::addColumn<quint32>("modifiers");
    QTest::addColumn<QString>("display");
    QTest::newRow("none") << 0u << u"G"_s;
    QTest::newRow("control") << 4096u << u"⌃G"_s;
    QTest::newRow("option") << 2048u << u"⌥G"_s;
    QTest::newRow("shift") << 512u << u"⇧G"_s;
    QTest::newRow("command") << 256u << u"⌘G"_s;
    QTest::newRow("command shift") << 768u << u"⇧⌘G"_s;
    QTest::newRow("control option") << 6144u << u"⌃⌥G"_s;
    QTest::newRow("all") << 6912u << u"⌃⌥⇧⌘G"_s;
    QTest::newRow("foreign bit") << (0x400u | 256u) << u"⌘G"_s;
}

void TestShortcut::displayOrder()
{
    QFETCH(quint32, modifiers);
    QFETCH(QString, display);
    QCOMPARE((Shortcut { 5, modifiers, u"G"_s }.display()), display);
}

void TestShortcut::equalityIgnoresLabel()
{
    const Shortcut a { 20, 2816, u"3"_s };
    QVERIFY(a == (Shortcut { 20, 2816, u"#"_s }));
    QVERIFY(a == (Shortcut { 20, 2816, QString() }));
    QVERIFY(a != (Shortcut { 21, 2816, u"3"_s }));
    QVERIFY(a != (Shortcut { 20, 2560, u"3"_s }));
}

void TestShortcut::jsonHasExactlyThreeKeys()
{
    const QByteArray json = Shortcut { 23, 2816, u"5"_s }.toJson();
    QVERIFY(!json.contains(' '));
    QVERIFY(!json.contains('\n'));
    const QJsonDocument document = QJsonDocument::fromJson(json);
    QVERIFY(document.isObject());
    const QJsonObject object = document.object();
    QCOMPARE(object.keys(), (QStringList { u"keyCode"_s, u"keyLabel"_s, u"modifiers"_s }));
    QVERIFY(object.value("keyCode"_L1).isDouble());
    QCOMPARE(object.value("keyCode"_L1).toInteger(), 23);
    QCOMPARE(object.value("modifiers"_L1).toInteger(), 2816);
    QVERIFY(object.value("keyLabel"_L1).isString());
    QCOMPARE(object.value("keyLabel"_L1).toString(), u"5"_s);
    // Integers, not fractions.
    QVERIFY(json.contains("\"keyCode\":23"));
    QVERIFY(json.contains("\"modifiers\":2816"));
}

void TestShortcut::jsonRoundTrip_data()
{
    QTest::addColumn<Shortcut>("shortcut");
    QTest::newRow("default") << Shortcut::defaultShortcut(CaptureMode::video);
    QTest::newRow("space") << Shortcut { 49, 6144, u"Boşluk"_s };
    QTest::newRow("arrow") << Shortcut { 126, 4096, u"↑"_s };
    QTest::newRow("quote") << Shortcut { 39, 256, u"\"'\\"_s };
    QTest::newRow("empty label") << Shortcut { 0, 0, QString() };
    QTest::newRow("largest") << Shortcut { 4294967295u, 4294967295u, u"x"_s };
}

void TestShortcut::jsonRoundTrip()
{
    QFETCH(Shortcut, shortcut);
    const std::optional<Shortcut> back = Shortcut::fromJson(shortcut.toJson());
    QVERIFY(back.has_value());
    QCOMPARE(back->keyCode, shortcut.keyCode);
    QCOMPARE(back->modifiers, shortcut.modifiers);
    QCOMPARE(back->keyLabel, shortcut.keyLabel);
}

void TestShortcut::jsonAcceptsIntegralNumbersAndExtraKeys()
{
    const auto spaced = Shortcut::fromJson(R"( { "keyLabel" : "G", "modifiers" : 2816, "keyCode" : 5 } )");
    QVERIFY(spaced.has_value());
    QCOMPARE(spaced->keyCode, 5u);
    QCOMPARE(spaced->modifiers, 2816u);
    QCOMPARE(spaced->keyLabel, u"G"_s);

    const auto fractionFree = Shortcut::fromJson(R"({"keyCode":20.0,"modifiers":2.816e3,"keyLabel":"3"})");
    QVERIFY(fractionFree.has_value());
    QCOMPARE(fractionFree->keyCode, 20u);
    QCOMPARE(fractionFree->modifiers, 2816u);

    const auto extra = Shortcut::fromJson(R"({"keyCode":21,"modifiers":256,"keyLabel":"4","other":[1]})");
    QVERIFY(extra.has_value());
    QCOMPARE(extra->keyCode, 21u);
}

void TestShortcut::jsonRejects_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not json") << QByteArray("garbage");
    QTest::newRow("truncated") << QByteArray(R"({"keyCode":20,"modifiers":2816,"keyLabel":"3")");
    QTest::newRow("array") << QByteArray(R"([20,2816,"3"])");
    QTest::newRow("number") << QByteArray("20");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("no keyCode") << QByteArray(R"({"modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("no modifiers") << QByteArray(R"({"keyCode":20,"keyLabel":"3"})");
    QTest::newRow("no keyLabel") << QByteArray(R"({"keyCode":20,"modifiers":2816})");
    QTest::newRow("keyCode string") << QByteArray(R"({"keyCode":"20","modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("modifiers string") << QByteArray(R"({"keyCode":20,"modifiers":"2816","keyLabel":"3"})");
    QTest::newRow("keyLabel number") << QByteArray(R"({"keyCode":20,"modifiers":2816,"keyLabel":3})");
    QTest::newRow("keyLabel null") << QByteArray(R"({"keyCode":20,"modifiers":2816,"keyLabel":null})");
    QTest::newRow("keyCode null") << QByteArray(R"({"keyCode":null,"modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("keyCode bool") << QByteArray(R"({"keyCode":true,"modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("negative keyCode") << QByteArray(R"({"keyCode":-1,"modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("negative modifiers") << QByteArray(R"({"keyCode":20,"modifiers":-256,"keyLabel":"3"})");
    QTest::newRow("fraction") << QByteArray(R"({"keyCode":20.5,"modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("too large") << QByteArray(R"({"keyCode":4294967296,"modifiers":2816,"keyLabel":"3"})");
    QTest::newRow("nested") << QByteArray(R"({"shortcut":{"keyCode":20,"modifiers":2816,"keyLabel":"3"}})");
    QTest::newRow("wrong case") << QByteArray(R"({"keycode":20,"modifiers":2816,"keyLabel":"3"})");
}

void TestShortcut::jsonRejects()
{
    QFETCH(QByteArray, json);
    QVERIFY(!Shortcut::fromJson(json).has_value());
}

QTEST_GUILESS_MAIN(TestShortcut)
#include "tst_shortcut.moc"
