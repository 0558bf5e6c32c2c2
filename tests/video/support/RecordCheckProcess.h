#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QStringList>

// vexet-record-check run as a child process, its output read line by line.
class RecordCheckProcess {
public:
    // The driver built beside the tests.
    static QString program();

    // Starts `program args…`; `wrapper` (e.g. unshare and a shell) goes in front when given.
    void start(const QStringList& arguments, const QStringList& wrapper = {},
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    // Waits until a line contains the text; false on time-out or when the process has ended.
    bool waitForLine(const QString& text, int timeoutMs = 30000);
    bool waitForExit(int timeoutMs = 60000);
    void kill();

    QStringList lines() const;
    // The message of the "finished error" line, with its line breaks restored.
    QString errorMessage() const;
    QStringList statusTexts() const; // "state text" of every status line
    int exitCode() const { return m_process.exitCode(); }
    QProcess::ExitStatus exitStatus() const { return m_process.exitStatus(); }
    qint64 pid() const { return m_process.processId(); }

private:
    void read();

    QProcess m_process;
    QStringList m_lines;
    QByteArray m_pending;
};
