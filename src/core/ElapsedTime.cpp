#include "ElapsedTime.h"

#include <cmath>

qint64 ElapsedTime::totalSeconds(std::optional<double> recordedSeconds, double wallClockSeconds)
{
    double elapsed = wallClockSeconds;
    if (recordedSeconds && std::isfinite(*recordedSeconds))
        elapsed = std::max(*recordedSeconds, 0.0);
    if (!std::isfinite(elapsed) || elapsed >= 9223372036854775808.0 || elapsed <= -9223372036854775809.0)
        qFatal("ElapsedTime: %f seconds cannot be shown", elapsed);
    return static_cast<qint64>(std::trunc(elapsed));
}

QString ElapsedTime::text(qint64 totalSeconds)
{
    return QString::asprintf("%02lld:%02lld", static_cast<long long>(totalSeconds / 60),
        static_cast<long long>(totalSeconds % 60));
}
