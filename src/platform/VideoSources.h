#pragma once

#include "Result.h"
#include "VideoTarget.h"

#include <QList>

// What the desktop offers to record: its displays, in the order the program lists its screens,
// and its normal windows on screen, front to back.
class VideoSources {
public:
    virtual ~VideoSources() = default;

    virtual Result<QList<VideoDisplay>> displays() = 0;
    // Normal, viewable, not minimised top-level windows; nothing filtered by owner or size yet.
    virtual Result<QList<VideoWindow>> windows() = 0;
};
