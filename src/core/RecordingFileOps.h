#pragma once

#include "Error.h"

#include <QString>
#include <optional>

// The file-system steps of a recording, each reporting the system's own error text.
class RecordingFileOps {
public:
    // Creates the staging file, empty and new; fails when the folder cannot take it.
    static std::optional<Error> createEmpty(const QString& path);
    // The size of a file, nothing when it cannot be read.
    static std::optional<qint64> size(const QString& path);
    // Renames a file within its folder; an existing file at `to` is replaced in place, atomically.
    static std::optional<Error> move(const QString& from, const QString& to);
    // Removes a file, ignoring every error.
    static void remove(const QString& path);
};
