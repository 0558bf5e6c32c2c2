#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

// One running program per user: a later start asks the running one to reopen, through a local
// socket in the user's runtime folder, and then ends.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    explicit SingleInstance(QString socketPath = defaultSocketPath(), QObject* parent = nullptr);

    // True when a running instance answered and was asked to reopen.
    bool askRunningInstanceToReopen();
    // Takes over the socket (a stale one left by a crash is removed first).
    bool listen();

    const QString& socketPath() const { return m_socketPath; }
    static QString defaultSocketPath();

Q_SIGNALS:
    void reopenRequested();

private:
    QString m_socketPath;
    QLocalServer m_server;
};
