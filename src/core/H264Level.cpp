#include "H264Level.h"

#include <iterator>

namespace {

struct Level {
    const char16_t* name;
    qint64 macroblocksPerSecond;
    qint64 macroblocksPerFrame;
};

// The limits of the H.264 standard's level table, from level 3 up. Level 4.1 is left out: it differs
// from level 4 only in bit rate, so it is never the lowest level that fits.
constexpr Level levels[] = {
    { u"3", 40500, 1620 },
    { u"3.1", 108000, 3600 },
    { u"3.2", 216000, 5120 },
    { u"4", 245760, 8192 },
    { u"4.2", 522240, 8704 },
    { u"5", 589824, 22080 },
    { u"5.1", 983040, 36864 },
    { u"5.2", 2073600, 36864 },
    { u"6", 4177920, 139264 },
    { u"6.1", 8355840, 139264 },
    { u"6.2", 16711680, 139264 },
};

} // namespace

QString H264Level::forFrames(int width, int height, int fps)
{
    const qint64 across = (qMax(width, 1) + 15) / 16;
    const qint64 down = (qMax(height, 1) + 15) / 16;
    const qint64 perFrame = across * down;
    const qint64 perSecond = perFrame * qMax(fps, 1);
    for (const Level& level : levels) {
        // A picture may also be no longer on either side than the square root of eight frame sizes.
        const qint64 longestSide = level.macroblocksPerFrame * 8;
        if (perFrame <= level.macroblocksPerFrame && perSecond <= level.macroblocksPerSecond
            && across * across <= longestSide && down * down <= longestSide)
            return QString::fromUtf16(level.name);
    }
    return QString::fromUtf16(levels[std::size(levels) - 1].name);
}
