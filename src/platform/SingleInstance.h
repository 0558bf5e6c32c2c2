#pragma once

#include "AppCommand.h"
#include "Result.h"

#include <QLocalServer>
#include <QObject>
#include <QString>

class QLocalSocket;

// One running program per user. A later start hands its command to the running one through a
// local socket and ends once the running one has accepted it.
//
// The socket lives in a folder only the user can enter. A connection carries one line, the
// command (AppCommand::message()), and gets one line back: "ok" once the command is accepted, or
// "error " followed by why not (Turkish, for the sending process to print). Connections from
// another user are dropped unanswered.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    explicit SingleInstance(QString socketPath, QObject* parent = nullptr);

    // Takes over the socket (a stale one left by a crash is removed first).
    bool listen();
    const QString& socketPath() const { return m_socketPath; }

    struct HandOver {
        enum class Outcome {
            accepted,
            refused, // an error reply, or no reply at all
            nobodyRunning,
        };
        Outcome outcome = Outcome::nobodyRunning;
        QString error; // why it was refused
    };
    // Hands a command to the program listening on the socket and waits for its reply. Blocks the
    // calling thread, needs no QCoreApplication. With waitForListener, a socket nobody listens on
    // yet is tried again until the timeout (the Vexet that holds the lock is still starting).
    static HandOver handOver(const QString& socketPath, const AppCommand& command, int timeoutMs = 10000,
        bool waitForListener = false);

    // The lock beside the socket, which the Vexet that runs holds for as long as it runs. False when
    // another process holds it: a Vexet is running or starting. Once taken, it stays held until
    // this process ends, so a socket found later is one a crashed Vexet left. Where no lock file
    // can be made, it counts as taken.
    static bool takeLock(const QString& socketPath);

    // The socket in the user's private folder, or why no folder is safe for it.
    static Result<QString> defaultSocketPath();
    // runtimeDir when it is safe, else fallback, made with mode 0700 when missing, when that one is.
    static Result<QString> privateFolder(const QString& runtimeDir, const QString& fallback);
    // Why a folder may not hold the socket (not a real folder, another user's, open to others), or
    // an empty text when it may.
    static QString unsafeFolderReason(const QString& folder);

Q_SIGNALS:
    // Delivered from the event loop after the reply went out, as a hot key's capture is.
    void commandReceived(const AppCommand& command);

private:
    void accept(QLocalSocket* client);
    void read(QLocalSocket* client);
    static void reply(QLocalSocket* client, const QByteArray& line);

    QString m_socketPath;
    QLocalServer m_server;
};
