#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

// A PulseAudio server of a test's own, with one null speaker, so that a test can make the sound
// server go away while the virtual desktop's own stays up.
class PrivateSoundServer {
public:
    // Keeps its socket, state and runtime files in the folder, made when missing.
    explicit PrivateSoundServer(const QString& folder);
    ~PrivateSoundServer();

    PrivateSoundServer(const PrivateSoundServer&) = delete;
    PrivateSoundServer& operator=(const PrivateSoundServer&) = delete;

    // Starts the server and waits until it takes connections.
    bool start();
    // Ends the server at once, as a crash would.
    void kill();
    // The calling process's environment with the clients pointed at this server.
    QProcessEnvironment clientEnvironment() const;

private:
    QString m_folder;
    QProcess m_server;
};
