#include "Error.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestError : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keepsDomainCodeAndDescription();
    void defaultIsEmpty();
    void equality();
    void videoErrorDomainAndCode_data();
    void videoErrorDomainAndCode();
};

void TestError::keepsDomainCodeAndDescription()
{
    const Error error(u"Vexet"_s, 7, u"Bir ileti."_s);
    QCOMPARE(error.domain(), u"Vexet"_s);
    QCOMPARE(error.code(), 7);
    QCOMPARE(error.localizedDescription(), u"Bir ileti."_s);
}

void TestError::defaultIsEmpty()
{
    const Error error;
    QVERIFY(error.domain().isEmpty());
    QCOMPARE(error.code(), 0);
    QVERIFY(error.localizedDescription().isEmpty());
}

void TestError::equality()
{
    const Error a(u"Vexet"_s, 1, u"a"_s);
    QCOMPARE(a, Error(u"Vexet"_s, 1, u"a"_s));
    QVERIFY(a != Error(u"Vexet.Video"_s, 1, u"a"_s));
    QVERIFY(a != Error(u"Vexet"_s, 2, u"a"_s));
    QVERIFY(a != Error(u"Vexet"_s, 1, u"b"_s));
}

void TestError::videoErrorDomainAndCode_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("empty") << QString();
    QTest::newRow("plain") << u"Düz bir ileti."_s;
    QTest::newRow("with path") << u"Bir ileti ve bir dosya:\n/tmp/Vexet-kurtarma-1.mp4"_s;
    QTest::newRow("surrounding space") << u"  boşluklu ileti \n"_s;
}

void TestError::videoErrorDomainAndCode()
{
    QFETCH(QString, message);
    const Error error = videoError(message);
    QCOMPARE(error.domain(), u"Vexet.Video"_s);
    QCOMPARE(error.code(), 1);
    // Unchanged: not trimmed, not reworded.
    QCOMPARE(error.localizedDescription(), message);
}

QTEST_GUILESS_MAIN(TestError)
#include "tst_error.moc"
