#include "SingleInstance.h"

#include <QFile>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSingleInstance : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

private Q_SLOTS:
    void withoutARunningInstanceNobodyAnswers()
    {
        SingleInstance second(m_dir.filePath(u"none.socket"_s));
        QVERIFY(!second.askRunningInstanceToReopen());
    }

    void aSecondStartAsksTheRunningOneToReopen()
    {
        const QString path = m_dir.filePath(u"vexet.socket"_s);
        SingleInstance running(path);
        QVERIFY(running.listen());
        QSignalSpy reopened(&running, &SingleInstance::reopenRequested);
        SingleInstance second(path);
        QVERIFY(second.askRunningInstanceToReopen());
        QTRY_COMPARE(reopened.size(), 1);
        SingleInstance third(path);
        QVERIFY(third.askRunningInstanceToReopen());
        QTRY_COMPARE(reopened.size(), 2);
    }

    void aSocketLeftByACrashIsTakenOver()
    {
        const QString path = m_dir.filePath(u"stale.socket"_s);
        QFile stale(path);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        SingleInstance starting(path);
        QVERIFY(!starting.askRunningInstanceToReopen());
        QVERIFY(starting.listen());
        QSignalSpy reopened(&starting, &SingleInstance::reopenRequested);
        QVERIFY(SingleInstance(path).askRunningInstanceToReopen());
        QTRY_COMPARE(reopened.size(), 1);
    }

    void onlyTheReopenRequestCounts()
    {
        const QString path = m_dir.filePath(u"strict.socket"_s);
        SingleInstance running(path);
        QVERIFY(running.listen());
        QSignalSpy reopened(&running, &SingleInstance::reopenRequested);
        QLocalSocket stranger;
        stranger.connectToServer(path);
        QVERIFY(stranger.waitForConnected(2000));
        stranger.write("hello\n");
        QVERIFY(stranger.waitForBytesWritten(2000));
        QTest::qWait(200);
        QCOMPARE(reopened.size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
