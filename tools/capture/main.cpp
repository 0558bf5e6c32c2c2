#include "CaptureArguments.h"
#include "CaptureTool.h"
#include "CaptureToolProtocol.h"

#include <QStringList>
#include <cstdio>

// vexet-capture: the screenshot helper of Vexet, and a command-line tool of its own.
int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const CaptureArguments parsed = CaptureArguments::parse(arguments);
    switch (parsed.outcome()) {
    case CaptureArguments::Outcome::help:
        std::fputs(qPrintable(CaptureArguments::help()), stdout);
        return 0;
    case CaptureArguments::Outcome::usageError:
        std::fputs(qPrintable(parsed.usageErrorText()), stderr);
        return static_cast<int>(CaptureExitStatus::usageError);
    case CaptureArguments::Outcome::capture:
        break;
    }
    return static_cast<int>(CaptureTool::run(parsed.request()));
}
