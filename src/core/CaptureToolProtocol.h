#pragma once

#include "CaptureMode.h"

#include <QString>
#include <QStringList>
#include <optional>

// How the program and its screenshot helper, vexet-capture, talk: the helper's command line and
// its exit statuses. Both sides include this header, so they cannot drift apart.
//
//   vexet-capture [-x] [-t png|jpg] [-D N | -i -s | -i -w [-o]] FILE

// The exit statuses of vexet-capture. The file exists exactly when the status is `written`.
enum class CaptureExitStatus : int {
    written = 0,
    // The user pressed Escape, clicked the right button or cancelled the desktop's own picker.
    cancelled = 1,
    usageError = 2,
    // No display server or desktop portal, a grab refused, a monitor that does not exist, a picture
    // the desktop did not give.
    displayFailure = 3,
    // The file could not be written.
    writeFailure = 4,
    // The desktop refused to give the picture: the user did not allow screenshots for the program.
    refused = 5,
};

namespace CaptureToolProtocol {

inline const QString silent = QStringLiteral("-x");
inline const QString type = QStringLiteral("-t");
inline const QString png = QStringLiteral("png");
inline const QString jpg = QStringLiteral("jpg");
inline const QString display = QStringLiteral("-D");
inline const QString interactive = QStringLiteral("-i");
inline const QString selection = QStringLiteral("-s");
inline const QString window = QStringLiteral("-w");
inline const QString noShadow = QStringLiteral("-o");

// What the program runs for a capture mode: "-x", "-t", "png", the mode's part, the file last. The
// whole-screen mode names the monitor when the program knows which one is under the pointer; without
// a number the helper takes the monitor under the pointer itself.
inline QStringList arguments(CaptureMode mode, std::optional<int> displayNumber, const QString& outputPath)
{
    QStringList result { silent, type, png };
    switch (mode) {
    case CaptureMode::region:
        result << interactive << selection;
        break;
    case CaptureMode::window:
        result << interactive << window << noShadow;
        break;
    case CaptureMode::screen:
        if (displayNumber)
            result << display << QString::number(*displayNumber);
        break;
    case CaptureMode::video:
        break;
    }
    result << outputPath;
    return result;
}

// A status the helper ends with that means no picture was taken for another reason than the user's
// own choice: the program reports it as a failure in every mode.
inline bool isFailure(int exitStatus)
{
    return exitStatus != static_cast<int>(CaptureExitStatus::written)
        && exitStatus != static_cast<int>(CaptureExitStatus::cancelled)
        && exitStatus != static_cast<int>(CaptureExitStatus::refused);
}

} // namespace CaptureToolProtocol
