#pragma once

#include "VideoSources.h"
#include "X11Connection.h"

// The displays (RandR outputs matched to Qt's screens) and the window manager's client windows.
class X11VideoSources : public VideoSources {
public:
    X11VideoSources();

    Result<QList<VideoDisplay>> displays() override;
    Result<QList<VideoWindow>> windows() override;

private:
    X11Connection m_connection;
};
