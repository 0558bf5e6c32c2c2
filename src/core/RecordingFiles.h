#pragma once

#include <QString>

// Names and places of the files a recording makes beside its destination.
class RecordingFiles {
public:
    // A fresh UUID in its standard textual form: upper-case hexadecimal, 8-4-4-4-12, no braces.
    static QString newUuid();

    // The hidden file the capture writes: ".Vexet-recording-" + UUID + ".mp4" in the destination's folder.
    static QString stagingPath(const QString& destination);
    // The visible file a failed recording is rescued to: "Vexet-kurtarma-" + UUID + ".mp4" beside the staging
    // file.
    static QString recoveryPath(const QString& staging);
    // The hidden output of the finishing step: ".Vexet-mix-" + UUID + ".mp4" beside its input.
    static QString mixPath(const QString& input);

    static bool isStagingName(const QString& fileName);
    static bool isRecoveryName(const QString& fileName);
    static bool isMixName(const QString& fileName);

private:
    static QString beside(const QString& path, const QString& fileName);
    static bool matches(const QString& fileName, const QString& prefix);
};
