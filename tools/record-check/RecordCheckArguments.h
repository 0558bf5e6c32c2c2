#pragma once

#include "VideoOptions.h"

#include <QString>
#include <QStringList>
#include <optional>

// The command line of vexet-record-check.
struct RecordCheckArguments {
    enum class Kind { Display, Region, Window };

    Kind kind = Kind::Display;
    QString display; // RandR output name or id; empty: the first monitor
    QString region; // "X,Y,W,H" in the display's own coordinates
    quint32 window = 0;
    QString output;
    double seconds = 5;
    double stopAfterStartMs = -1; // stop this long after start(), whatever the state (countdown tests)
    VideoOptions options;
    QString preset;
    bool heartbeat = false;

    // Nothing and a message on stderr for a bad command line.
    static std::optional<RecordCheckArguments> parse(const QStringList& arguments, QString* problem);
    static QString usage();
};
