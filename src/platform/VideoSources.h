#pragma once

#include "Result.h"
#include "VideoTarget.h"

#include <QImage>
#include <QList>
#include <QString>
#include <functional>

class QScreen;

// What the desktop offers to record. Either it lists its displays (in the order the program lists
// its screens) and its normal windows (front to back), and the user picks from the lists; or the
// desktop chooses itself, through its own chooser, when a recording is about to begin.
class VideoSources {
public:
    virtual ~VideoSources() = default;

    virtual Result<QList<VideoDisplay>> displays() = 0;
    // Normal, viewable, not minimised top-level windows; nothing filtered by owner or size yet.
    virtual Result<QList<VideoWindow>> windows() = 0;

    // The desktop's chooser picks the source; the lists above are empty.
    virtual bool desktopChooses() const { return false; }
    // What the desktop will record without asking, for a display (window false) or a window: the
    // choice it remembers; empty when it will ask.
    virtual QString rememberedChoice(bool /*window*/) const { return {}; }
    // The desktop asks again next time.
    virtual void forgetChoices() { }
    // Asks the desktop for a display or a window to record, the pointer drawn into the pictures or
    // not; answers later on the main loop, with a RecordingCancellation when the user declined. The
    // target's source stays open until the recorder releases it.
    virtual void choose(bool window, bool cursor, std::function<void(const Result<VideoTarget>&)> done) = 0;

    // A picture of the screen as it is now, in its device pixels, for the region overlay; answers at
    // once or later on the main loop, with a null image when there is none.
    virtual void screenPicture(QScreen* screen, std::function<void(const QImage&)> done) = 0;
};
