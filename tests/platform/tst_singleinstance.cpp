#include "SingleInstance.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>
#include <future>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(AppCommand)

namespace {

// The test program started again as another user: hands "settings" to the socket and prints what
// came of it.
const char peerVariable[] = "VEXET_TEST_PEER_SOCKET";

int runAsPeer(const QString& socketPath)
{
    const SingleInstance::HandOver handed = SingleInstance::handOver(socketPath, AppCommand::settings());
    const char* outcome = handed.outcome == SingleInstance::HandOver::Outcome::accepted ? "accepted"
        : handed.outcome == SingleInstance::HandOver::Outcome::refused                  ? "refused"
                                                                                        : "nobodyRunning";
    std::printf("%s\n%s\n", outcome, qPrintable(handed.error));
    return 0;
}

// Runs a blocking hand-over on another thread while this one serves the socket.
SingleInstance::HandOver handOverWhileServing(
    const QString& path, const AppCommand& command, int timeoutMs = 10000)
{
    auto result = std::async(std::launch::async,
        [path, command, timeoutMs] { return SingleInstance::handOver(path, command, timeoutMs); });
    // The hand-over gives up on its own timeout, so get() below never waits long.
    if (!QTest::qWaitFor(
            [&result] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
            30000))
        qWarning("the hand-over took longer than its own timeout");
    return result.get();
}

// Sends raw bytes and returns the reply line, as any local program could.
QByteArray exchange(const QString& path, const QByteArray& bytes)
{
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(5000))
        return "not connected";
    socket.write(bytes);
    if (!QTest::qWaitFor([&socket] { return socket.canReadLine(); }, 10000))
        return "no reply";
    return socket.readLine();
}

const QString noReply = u"Çalışan Vexet yanıt vermedi."_s;

} // namespace

class TestSingleInstance : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

private Q_SLOTS:
    void withoutARunningInstanceNobodyAnswers()
    {
        const SingleInstance::HandOver handed
            = SingleInstance::handOver(m_dir.filePath(u"none.socket"_s), AppCommand());
        QCOMPARE(handed.outcome, SingleInstance::HandOver::Outcome::nobodyRunning);
    }

    void everyCommandIsHandedOverAndAccepted()
    {
        const QString path = m_dir.filePath(u"vexet.socket"_s);
        SingleInstance running(path);
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::commandReceived);
        const QList<AppCommand> commands { AppCommand(), AppCommand::capture(CaptureMode::region),
            AppCommand::capture(CaptureMode::window), AppCommand::capture(CaptureMode::screen),
            AppCommand::capture(CaptureMode::video), AppCommand::settings() };
        for (const AppCommand& command : commands) {
            const SingleInstance::HandOver handed = handOverWhileServing(path, command);
            QCOMPARE(handed.outcome, SingleInstance::HandOver::Outcome::accepted);
            QCOMPARE(handed.error, QString());
            QTRY_COMPARE(received.size(), commands.indexOf(command) + 1);
            QVERIFY(received.last().first().value<AppCommand>() == command);
        }
    }

    void theReplyGoesOutBeforeTheCommandRuns()
    {
        const QString path = m_dir.filePath(u"order.socket"_s);
        SingleInstance running(path);
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::commandReceived);
        QLocalSocket client;
        client.connectToServer(path);
        QVERIFY(client.waitForConnected(5000));
        client.write("settings\n");
        // A command that opens a modal window must not keep the sending process waiting.
        bool answeredFirst = false;
        connect(&running, &SingleInstance::commandReceived, this, [&client, &answeredFirst] {
            client.waitForReadyRead(0);
            answeredFirst = client.canReadLine();
        });
        QTRY_COMPARE(received.size(), 1);
        QVERIFY(answeredFirst);
        QCOMPARE(client.readLine(), QByteArray("ok\n"));
    }

    void malformedAndUnknownCommandsGetAnErrorAndRunNothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("unknown") << QByteArray("hello\n") << QByteArray("error Anlaşılmayan komut: hello\n");
        QTest::newRow("unknown mode")
            << QByteArray("capture bogus\n")
            << QByteArray(
                   "error Bilinmeyen yakalama türü: bogus (region, window, screen ya da video olmalı).\n");
        QTest::newRow("mode missing")
            << QByteArray("capture\n")
            << QByteArray(
                   "error capture komutu bir yakalama türü ister: region, window, screen ya da video.\n");
        QTest::newRow("empty line") << QByteArray("\n") << QByteArray("error Boş komut.\n");
        QTest::newRow("trailing space")
            << QByteArray("reopen \n") << QByteArray("error Anlaşılmayan komut: reopen \n");
        QTest::newRow("a line that never ends")
            << QByteArray(300, 'a') << "error Anlaşılmayan komut: " + QByteArray(60, 'a') + "…\n";
    }

    void malformedAndUnknownCommandsGetAnErrorAndRunNothing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, reply);
        const QString path = m_dir.filePath(u"strict.socket"_s);
        SingleInstance running(path);
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::commandReceived);
        QCOMPARE(exchange(path, bytes), reply);
        // Whatever the answer set going has arrived by now.
        QCoreApplication::sendPostedEvents();
        QCOMPARE(received.size(), 0);

        // The same server still takes a good command, and only that one.
        QCOMPARE(exchange(path, "capture screen\n"), QByteArray("ok\n"));
        QTRY_COMPARE(received.size(), 1);
        QVERIFY(received.first().first().value<AppCommand>() == AppCommand::capture(CaptureMode::screen));
    }

    void theSenderReadsTheErrorReply()
    {
        const QString path = m_dir.filePath(u"fake.socket"_s);
        QLocalServer fake;
        QVERIFY(fake.listen(path));
        QByteArray heard;
        connect(&fake, &QLocalServer::newConnection, this, [&fake, &heard] {
            QLocalSocket* client = fake.nextPendingConnection();
            connect(client, &QLocalSocket::readyRead, client, [client, &heard] {
                if (!client->canReadLine())
                    return;
                heard = client->readLine();
                client->write("error Olmaz.\n");
                client->disconnectFromServer();
            });
        });
        const SingleInstance::HandOver handed
            = handOverWhileServing(path, AppCommand::capture(CaptureMode::video));
        QCOMPARE(heard, QByteArray("capture video\n"));
        QCOMPARE(handed.outcome, SingleInstance::HandOver::Outcome::refused);
        QCOMPARE(handed.error, u"Olmaz."_s);
    }

    void noReplyIsARefusal()
    {
        const QString path = m_dir.filePath(u"silent.socket"_s);
        QLocalServer silent;
        QVERIFY(silent.listen(path));
        // Takes the connection and says nothing.
        SingleInstance::HandOver handed = handOverWhileServing(path, AppCommand(), 300);
        QCOMPARE(handed.outcome, SingleInstance::HandOver::Outcome::refused);
        QCOMPARE(handed.error, noReply);

        // Hangs up without a word.
        connect(&silent, &QLocalServer::newConnection, this, [&silent] {
            while (QLocalSocket* client = silent.nextPendingConnection())
                client->disconnectFromServer();
        });
        handed = handOverWhileServing(path, AppCommand());
        QCOMPARE(handed.outcome, SingleInstance::HandOver::Outcome::refused);
        QCOMPARE(handed.error, noReply);
    }

    void theLockTellsARunningOrStartingVexet()
    {
        const QString path = m_dir.filePath(u"locked.socket"_s);
        QVERIFY(SingleInstance::takeLock(path));
        QVERIFY(QFile::exists(path + u".lock"_s));
        // Any other holder, here another open of the same file, finds it taken.
        QVERIFY(!SingleInstance::takeLock(path));
        QVERIFY(SingleInstance::takeLock(m_dir.filePath(u"other.socket"_s)));
    }

    void aStartingVexetIsWaitedFor()
    {
        const QString path = m_dir.filePath(u"starting.socket"_s);
        // Nobody listens before the timeout: the sender gives up with the no-reply error.
        SingleInstance::HandOver handed = SingleInstance::handOver(path, AppCommand(), 300, true);
        QCOMPARE(handed.outcome, SingleInstance::HandOver::Outcome::refused);
        QCOMPARE(handed.error, noReply);

        // One that starts listening while the sender waits gets the command.
        auto result = std::async(std::launch::async, [path] {
            return SingleInstance::handOver(path, AppCommand::capture(CaptureMode::region), 20000, true);
        });
        SingleInstance late(path);
        QSignalSpy received(&late, &SingleInstance::commandReceived);
        QVERIFY(late.listen());
        QVERIFY(QTest::qWaitFor(
            [&result] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
            30000));
        QCOMPARE(result.get().outcome, SingleInstance::HandOver::Outcome::accepted);
        QTRY_COMPARE(received.size(), 1);
        QVERIFY(received.first().first().value<AppCommand>() == AppCommand::capture(CaptureMode::region));
    }

    void aSocketLeftByACrashIsTakenOver()
    {
        const QString path = m_dir.filePath(u"stale.socket"_s);
        // A socket file nobody listens on any more, as a killed instance leaves it.
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QVERIFY(descriptor >= 0);
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        const QByteArray name = QFile::encodeName(path);
        std::copy(name.begin(), name.end(), address.sun_path);
        QCOMPARE(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ::close(descriptor);
        QVERIFY(QFile::exists(path));

        QCOMPARE(SingleInstance::handOver(path, AppCommand()).outcome,
            SingleInstance::HandOver::Outcome::nobodyRunning);
        SingleInstance starting(path);
        QVERIFY(starting.listen());
        QSignalSpy received(&starting, &SingleInstance::commandReceived);
        QCOMPARE(
            handOverWhileServing(path, AppCommand()).outcome, SingleInstance::HandOver::Outcome::accepted);
        QTRY_COMPARE(received.size(), 1);
    }

    void aFileInThePlaceOfTheSocketIsTakenOver()
    {
        const QString path = m_dir.filePath(u"file.socket"_s);
        QFile stale(path);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        QCOMPARE(SingleInstance::handOver(path, AppCommand()).outcome,
            SingleInstance::HandOver::Outcome::nobodyRunning);
        SingleInstance starting(path);
        QVERIFY(starting.listen());
        QCOMPARE(handOverWhileServing(path, AppCommand::settings()).outcome,
            SingleInstance::HandOver::Outcome::accepted);
    }

    void aConnectionFromAnotherUserIsDropped()
    {
        if (::geteuid() != 0)
            QSKIP("needs root: the other user's program is started as nobody through setpriv");
        // A place the other user can reach, unlike the private folder, so only the check on the
        // peer's user stands in the way.
        QTemporaryDir open(u"/tmp/vexet-peer-XXXXXX"_s);
        QVERIFY(open.isValid());
        QCOMPARE(::chmod(QFile::encodeName(open.path()).constData(), 0711), 0);
        const QString path = open.filePath(u"vexet.socket"_s);
        SingleInstance running(path);
        QVERIFY(running.listen());
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0777), 0);
        QSignalSpy received(&running, &SingleInstance::commandReceived);

        QProcess peer;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(peerVariable), path);
        peer.setProcessEnvironment(environment);
        peer.start(u"setpriv"_s,
            { u"--reuid=nobody"_s, u"--regid=nogroup"_s, u"--clear-groups"_s,
                QCoreApplication::applicationFilePath() });
        QVERIFY(peer.waitForStarted(10000));
        QVERIFY(QTest::qWaitFor([&peer] { return peer.state() == QProcess::NotRunning; }, 30000));
        QCOMPARE(peer.exitCode(), 0);
        // It reached the socket (not "nobodyRunning") and was dropped unanswered.
        QCOMPARE(QString::fromUtf8(peer.readAllStandardOutput()), u"refused\n"_s + noReply + u'\n');
        QCoreApplication::sendPostedEvents();
        QCOMPARE(received.size(), 0);

        // The same socket takes the same command from this user.
        QCOMPARE(handOverWhileServing(path, AppCommand::settings()).outcome,
            SingleInstance::HandOver::Outcome::accepted);
        QTRY_COMPARE(received.size(), 1);
    }
};

int main(int argc, char** argv)
{
    if (const QByteArray socket = qgetenv(peerVariable); !socket.isEmpty())
        return runAsPeer(QFile::decodeName(socket));
    QCoreApplication app(argc, argv);
    TestSingleInstance test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_singleinstance.moc"
