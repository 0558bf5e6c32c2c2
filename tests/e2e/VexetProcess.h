#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// The real vexet binary, started with its own settings folder.
class VexetProcess {
public:
    // configHome: the XDG config folder the program keeps its settings in.
    explicit VexetProcess(const QString& configHome);
    ~VexetProcess();

    bool start();
    qint64 pid() const { return m_process.processId(); }
    QProcess& process() { return m_process; }

    // Sends SIGTERM and waits; true when the program exited normally with status 0.
    bool terminateAndWait(int* exitCode = nullptr);

    // Starts the program once more with the same settings; true when that second start ended
    // by itself with status 0 (it handed over to the running one).
    bool startAgainAndWait();

    static QString binary();

private:
    QProcess m_process;
    QString m_configHome;
};
