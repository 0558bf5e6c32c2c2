#include "CaptureMode.h"

#include <QHash>
#include <QSet>
#include <QTest>
#include <limits>

using namespace Qt::StringLiterals;

class TestCaptureMode : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rawValuesAreOneToFour();
    void allCasesInDeclarationOrder();
    void fromRawValueAcceptsOneToFour();
    void fromRawValueRejectsOthers_data();
    void fromRawValueRejectsOthers();
    void titles_data();
    void titles();
    void hashFeedsRawValue();
    void usableAsSetAndHashKey();
};

void TestCaptureMode::rawValuesAreOneToFour()
{
    QCOMPARE(CaptureModes::rawValue(CaptureMode::region), 1u);
    QCOMPARE(CaptureModes::rawValue(CaptureMode::window), 2u);
    QCOMPARE(CaptureModes::rawValue(CaptureMode::screen), 3u);
    QCOMPARE(CaptureModes::rawValue(CaptureMode::video), 4u);
}

void TestCaptureMode::allCasesInDeclarationOrder()
{
    QCOMPARE(CaptureModes::allCases.size(), std::size_t { 4 });
    QCOMPARE(CaptureModes::allCases[0], CaptureMode::region);
    QCOMPARE(CaptureModes::allCases[1], CaptureMode::window);
    QCOMPARE(CaptureModes::allCases[2], CaptureMode::screen);
    QCOMPARE(CaptureModes::allCases[3], CaptureMode::video);
}

void TestCaptureMode::fromRawValueAcceptsOneToFour()
{
    for (CaptureMode mode : CaptureModes::allCases) {
        const std::optional<CaptureMode> back = CaptureModes::fromRawValue(CaptureModes::rawValue(mode));
        QVERIFY(back.has_value());
        QCOMPARE(*back, mode);
    }
    QCOMPARE(CaptureModes::fromRawValue(3), std::optional(CaptureMode::screen));
}

void TestCaptureMode::fromRawValueRejectsOthers_data()
{
    QTest::addColumn<quint32>("raw");
    QTest::newRow("0") << 0u;
    QTest::newRow("5") << 5u;
    QTest::newRow("100") << 100u;
    QTest::newRow("2^31") << 0x80000000u;
    QTest::newRow("max") << std::numeric_limits<quint32>::max();
}

void TestCaptureMode::fromRawValueRejectsOthers()
{
    QFETCH(quint32, raw);
    QVERIFY(!CaptureModes::fromRawValue(raw).has_value());
}

void TestCaptureMode::titles_data()
{
    QTest::addColumn<CaptureMode>("mode");
    QTest::addColumn<QString>("title");
    QTest::newRow("region") << CaptureMode::region << u"Alan seçerek yakala"_s;
    QTest::newRow("window") << CaptureMode::window << u"Pencere yakala"_s;
    QTest::newRow("screen") << CaptureMode::screen << u"Ekranı yakala"_s;
    QTest::newRow("video") << CaptureMode::video << u"Video kaydı başlat / durdur"_s;
}

void TestCaptureMode::titles()
{
    QFETCH(CaptureMode, mode);
    QFETCH(QString, title);
    QCOMPARE(CaptureModes::title(mode), title);
}

void TestCaptureMode::hashFeedsRawValue()
{
    for (size_t seed : { size_t { 0 }, size_t { 1 }, size_t { 0x5eed } }) {
        for (CaptureMode mode : CaptureModes::allCases)
            QCOMPARE(qHash(mode, seed), qHash(CaptureModes::rawValue(mode), seed));
    }
    // The raw value, not the position in allCases (0-based), goes in.
    QCOMPARE(qHash(CaptureMode::region, 7), qHash(1u, 7));
    QVERIFY(qHash(CaptureMode::region, 7) != qHash(0u, 7));
}

void TestCaptureMode::usableAsSetAndHashKey()
{
    QSet<CaptureMode> modes;
    for (CaptureMode mode : CaptureModes::allCases)
        modes.insert(mode);
    modes.insert(CaptureMode::window);
    QCOMPARE(modes.size(), 4);
    QVERIFY(modes.contains(CaptureMode::video));

    QHash<CaptureMode, QString> titles;
    for (CaptureMode mode : CaptureModes::allCases)
        titles.insert(mode, CaptureModes::title(mode));
    QCOMPARE(titles.value(CaptureMode::screen), u"Ekranı yakala"_s);
}

QTEST_GUILESS_MAIN(TestCaptureMode)
#include "tst_capturemode.moc"
