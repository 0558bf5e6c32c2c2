#include "VideoOptions.h"

#include "Preferences.h"
#include "StoredValue.h"

#include <QVariant>
#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

const auto systemKey = "video.system"_L1;
const auto microphoneKey = "video.microphone"_L1;
const auto fpsKey = "video.fps"_L1;
const auto qualityKey = "video.quality"_L1;
const auto cursorKey = "video.cursor"_L1;

struct Bounds {
    double longSide;
    double shortSide;
};

Bounds bounds(int quality)
{
    switch (quality) {
    case 0:
        return { 1920, 1080 };
    case 1:
        return { 3840, 2160 };
    default:
        return { 4096, 2304 }; // the H.264 level limit
    }
}

double factor(double bound, double side)
{
    return side >= 1 ? bound / side : bound;
}

int truncatedDimension(double value)
{
    if (!std::isfinite(value) || value >= 2147483648.0 || value <= -2147483649.0)
        qFatal("VideoOptions::outputSize: frame dimension %f out of range", value);
    return static_cast<int>(std::trunc(value));
}

// The encoder needs even dimensions of at least 2.
int evenDimension(int value)
{
    return value < 2 ? 2 : (value & ~1);
}

} // namespace

VideoOptions VideoOptions::saved()
{
    return saved(Preferences::shared().defaults());
}

VideoOptions VideoOptions::saved(const QSettings& store)
{
    VideoOptions options;
    // Absent or not a boolean reads as true for these two, so that a fresh installation records
    // system audio and the pointer.
    options.systemAudio = StoredValue::boolean(store.value(systemKey)).value_or(true);
    options.microphone = StoredValue::boolean(store.value(microphoneKey)).value_or(false);
    options.fps = StoredValue::integer(store.value(fpsKey)).value_or(0) == 60 ? 60 : 30;
    const qint64 quality = StoredValue::integer(store.value(qualityKey)).value_or(0);
    options.quality = static_cast<int>(std::clamp<qint64>(quality, 0, 2));
    options.cursor = StoredValue::boolean(store.value(cursorKey)).value_or(true);
    return options;
}

void VideoOptions::save() const
{
    save(Preferences::shared().defaults());
}

void VideoOptions::save(QSettings& store) const
{
    store.setValue(systemKey, systemAudio);
    store.setValue(microphoneKey, microphone);
    store.setValue(fpsKey, fps);
    store.setValue(qualityKey, quality);
    store.setValue(cursorKey, cursor);
}

VideoOptions::Size VideoOptions::outputSize(double sourceWidth, double sourceHeight) const
{
    const Bounds limits = bounds(quality);
    const bool portrait = sourceWidth < sourceHeight;
    const double widthBound = portrait ? limits.shortSide : limits.longSide;
    const double heightBound = portrait ? limits.longSide : limits.shortSide;

    const double scale
        = std::min({ factor(widthBound, sourceWidth), factor(heightBound, sourceHeight), 1.0 });
    return { evenDimension(truncatedDimension(sourceWidth * scale)),
        evenDimension(truncatedDimension(sourceHeight * scale)) };
}
