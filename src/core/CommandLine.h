#pragma once

#include "AppCommand.h"

#include <QString>
#include <QStringList>

// The command line of vexet:
//   vexet [--capture region|window|screen|video | --settings | --help | --version]
// At most one command; "--capture=MODE" is the same as "--capture MODE"; -h or --help anywhere asks
// for help. Qt's own options (-platform, -style, …) are not taken: Qt reads the same settings from
// its environment variables (QT_QPA_PLATFORM, QT_STYLE_OVERRIDE, …).
class CommandLine {
public:
    enum class Outcome {
        run, // start, or hand the command to the running Vexet
        help,
        version,
        usageError,
    };

    // arguments: without the program name.
    static CommandLine parse(const QStringList& arguments);

    Outcome outcome() const { return m_outcome; }
    // What to run; reopen when no command was given.
    const AppCommand& command() const { return m_command; }
    // Why the arguments were refused, one Turkish sentence.
    const QString& error() const { return m_error; }

    // The one-line synopsis.
    static QString usage();
    // What a usage error prints on standard error: the reason, the synopsis and where to look.
    QString usageErrorText() const;
    // What --help prints on standard output.
    static QString help();
    // What --version prints on standard output.
    static QString versionText(const QString& version);

private:
    static CommandLine refused(const QString& reason);

    Outcome m_outcome = Outcome::usageError;
    AppCommand m_command;
    QString m_error;
};
