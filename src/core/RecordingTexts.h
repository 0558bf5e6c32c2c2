#pragma once

#include <QString>

// Every fixed text of the recording engine: the status line and the failure messages, and the way a
// message is completed with the path of a file that was kept.
class RecordingTexts {
public:
    // Status line.
    static QString preparing();
    static QString countdown(int secondsLeft); // the digit and "…"
    static QString completing(); // a stop was asked for
    static QString ending(); // a capture failure ends the recording
    static QString saving();

    // Failures of the start.
    static QString noMicrophone();
    static QString displayGone();
    static QString windowGone();
    static QString regionInvalid();
    static QString folderNotWritable(const QString& folder);
    static QString captureFailed();

    // The desktop stopped streaming the source during the recording (its sharing was stopped, the
    // window closed, the monitor went away).
    static QString sourceEnded();

    // The capture did not end when asked to.
    static QString stopFailed();

    // Failures of the end.
    static QString locationMissing();
    static QString noVideo();
    static QString videoMergeFailed();
    static QString audioMergeFailed();
    static QString exportUnavailable();
    static QString mixFailed();

    // The message of a failure whose recording was moved to a visible recovery file.
    static QString withRecovery(const QString& message, const QString& recoveryPath);
    // The message of a failed move: the staging file stayed where it was.
    static QString withStagingKept(const QString& moveMessage, const QString& stagingPath);
    // The recording was saved, but a capture error had cut it short.
    static QString cutShort(const QString& failureMessage, const QString& destinationPath);
};
