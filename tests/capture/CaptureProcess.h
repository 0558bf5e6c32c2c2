#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

// The real vexet-capture, run with the given arguments.
class CaptureProcess {
public:
    explicit CaptureProcess(const QStringList& arguments,
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    ~CaptureProcess();

    bool start();
    qint64 pid() const { return m_process.processId(); }
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    // Waits (keeping the event loop going) until the tool exits; false if it has not by then.
    bool waitForExit(int milliseconds = 30000);
    // The exit status; -1 if the tool did not exit normally.
    int exitCode() const;
    QByteArray standardOutput() const { return m_output; }
    QByteArray standardError() const { return m_error; }

    struct Outcome {
        // -1 if the tool did not exit normally in time.
        int exitCode = -1;
        QByteArray output;
        QByteArray error;
    };
    // Runs the tool to its end.
    static Outcome run(const QStringList& arguments,
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    static QString binary();

private:
    void collect();

    QProcess m_process;
    QByteArray m_output;
    QByteArray m_error;
};
