#include "Result.h"

#include <QString>
#include <QTest>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

class TestResult : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void successHoldsValue();
    void failureHoldsError();
    void valueIsMutable();
    void moveOnlyValue();
    void optionalValueDistinguishesNothingFromFailure();
    void copiesKeepTheirState();
};

void TestResult::successHoldsValue()
{
    const Result<int> result(42);
    QVERIFY(result.ok());
    QVERIFY(static_cast<bool>(result));
    QCOMPARE(result.value(), 42);
}

void TestResult::failureHoldsError()
{
    const Result<int> result(videoError(u"olmadı"_s));
    QVERIFY(!result.ok());
    QVERIFY(!result);
    QCOMPARE(result.error().domain(), u"Vexet.Video"_s);
    QCOMPARE(result.error().code(), 1);
    QCOMPARE(result.error().localizedDescription(), u"olmadı"_s);
}

void TestResult::valueIsMutable()
{
    Result<QString> result(u"a"_s);
    result.value() += u"b"_s;
    QCOMPARE(result.value(), u"ab"_s);
}

void TestResult::moveOnlyValue()
{
    Result<std::unique_ptr<int>> result(std::make_unique<int>(5));
    QVERIFY(result.ok());
    std::unique_ptr<int> taken = std::move(result.value());
    QVERIFY(taken);
    QCOMPARE(*taken, 5);
}

void TestResult::optionalValueDistinguishesNothingFromFailure()
{
    const Result<std::optional<int>> cancelled(std::optional<int> {});
    QVERIFY(cancelled.ok());
    QVERIFY(!cancelled.value().has_value());

    const Result<std::optional<int>> failed(Error(u"Vexet"_s, 2, u"hata"_s));
    QVERIFY(!failed.ok());
    QCOMPARE(failed.error().code(), 2);
}

void TestResult::copiesKeepTheirState()
{
    const Result<QString> success(u"tamam"_s);
    const Result<QString> failure(Error(u"Vexet"_s, 3, u"x"_s));
    Result<QString> copy = success;
    QVERIFY(copy.ok());
    QCOMPARE(copy.value(), u"tamam"_s);
    copy = failure;
    QVERIFY(!copy.ok());
    QCOMPARE(copy.error(), failure.error());
    QVERIFY(success.ok());
}

QTEST_GUILESS_MAIN(TestResult)
#include "tst_result.moc"
