#pragma once

#include "VideoSources.h"
#include "X11Connection.h"

// The displays (RandR outputs matched to Qt's screens) and the window manager's client windows;
// pictures of a screen straight from the X server.
class X11VideoSources : public VideoSources {
public:
    X11VideoSources();

    Result<QList<VideoDisplay>> displays() override;
    Result<QList<VideoWindow>> windows() override;
    // The user picks from the lists; nobody asks the X desktop to choose.
    void choose(bool window, bool cursor, std::function<void(const Result<VideoTarget>&)> done) override;
    void screenPicture(QScreen* screen, std::function<void(const QImage&)> done) override;

private:
    X11Connection m_connection;
};
