#pragma once

#include "CommandLine.h"

#include <QString>
#include <optional>

class AppDelegate;

// The start of the program as its command line asks: --help and --version answered, a wrong
// command line refused, a command handed to the Vexet already running; or, when none runs, this
// process becomes Vexet, takes the socket for later starts and runs its own command once launched.
class Launch {
public:
    // argv: main's, the program name first.
    Launch(int argc, char** argv);

    // Whatever needs no application object, before there is one. The exit status when this process
    // is done (help, version, a wrong command line, a command the running Vexet took or refused);
    // none when it is to start Vexet.
    std::optional<int> handOver();

    // Once the application and its delegate exist: listens for later starts' commands, runs the
    // launch sequence, and then this start's own command.
    void start(AppDelegate& delegate);

    enum ExitStatus {
        success = 0,
        refusedByRunningInstance = 1, // or it did not answer
        usageError = 2,
    };

private:
    CommandLine m_commandLine;
    std::optional<QString> m_socketPath; // none: no safe place, so no single instance
};
