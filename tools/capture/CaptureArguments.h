#pragma once

#include "CaptureRequest.h"

#include <QString>
#include <QStringList>

// The command line of vexet-capture (CaptureToolProtocol.h):
//   vexet-capture [-x] [-t png|jpg] [-D N | -i -s | -i -w [-o]] FILE
// Options may come in any order before or after FILE; "--" ends the options. Without -D, -i -s or
// -i -w it takes the monitor under the pointer.
class CaptureArguments {
public:
    enum class Outcome {
        capture,
        help,
        usageError,
    };

    // arguments: without the program name.
    static CaptureArguments parse(const QStringList& arguments);

    Outcome outcome() const { return m_outcome; }
    const CaptureRequest& request() const { return m_request; }
    // Why the arguments were refused, one Turkish sentence.
    const QString& error() const { return m_error; }

    // The one-line synopsis.
    static QString usage();
    // What a usage error prints on standard error: the reason, the synopsis and where to look.
    QString usageErrorText() const;
    // What --help prints on standard output.
    static QString help();

private:
    static CaptureArguments refused(const QString& reason);

    Outcome m_outcome = Outcome::usageError;
    CaptureRequest m_request;
    QString m_error;
};
