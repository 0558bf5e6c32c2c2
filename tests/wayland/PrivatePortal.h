#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A second desktop portal for the tests that need an answer sway's own backend never gives (a
// refusal, a cancelled picker): a session bus of its own, the real xdg-desktop-portal frontend on
// it, and behind the frontend the test backend that answers every screenshot with one response
// code. A program started with busAddress() as its DBUS_SESSION_BUS_ADDRESS asks this portal; it
// still draws on the test desktop's compositor.
class PrivatePortal {
public:
    explicit PrivatePortal(uint response);
    ~PrivatePortal();

    bool isReady() const { return m_ready; }
    QString errorString() const { return m_error; }
    const QString& busAddress() const { return m_address; }

private:
    bool start(uint response);
    bool fail(const QString& error);
    static void stop(QProcess& process);

    QTemporaryDir m_dir;
    QProcess m_bus;
    QProcess m_backend;
    QProcess m_frontend;
    QString m_address;
    QString m_error;
    bool m_ready = false;
};
