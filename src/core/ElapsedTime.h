#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

// The elapsed-time text of a running recording.
class ElapsedTime {
public:
    // Whole seconds to show: the recorded duration when it is a finite number (raised to 0 when
    // negative), otherwise the wall-clock seconds since recording began. Truncated, not rounded.
    static qint64 totalSeconds(std::optional<double> recordedSeconds, double wallClockSeconds);

    // "%02d:%02d" of minutes and seconds. Minutes are not wrapped into hours: 100 minutes is "100:00".
    static QString text(qint64 totalSeconds);
};
