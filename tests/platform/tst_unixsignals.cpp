#include "UnixSignals.h"

#include <QSignalSpy>
#include <QTest>
#include <csignal>

class TestUnixSignals : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void terminationSignalsArriveOnTheEventLoop()
    {
        UnixSignals watcher;
        QVERIFY(watcher.isWatching());
        QSignalSpy spy(&watcher, &UnixSignals::terminationRequested);
        std::raise(SIGTERM);
        std::raise(SIGINT);
        QCOMPARE(spy.size(), 0); // nothing runs inside the handler
        QTRY_COMPARE(spy.size(), 2);
        QCOMPARE(spy[0][0].toInt(), SIGTERM);
        QCOMPARE(spy[1][0].toInt(), SIGINT);
    }

    void aSecondWatcherCanBeMadeAfterTheFirstIsGone()
    {
        {
            UnixSignals first;
            QVERIFY(first.isWatching());
        }
        UnixSignals second;
        QVERIFY(second.isWatching());
        QSignalSpy spy(&second, &UnixSignals::terminationRequested);
        std::raise(SIGTERM);
        QTRY_COMPARE(spy.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestUnixSignals)
#include "tst_unixsignals.moc"
