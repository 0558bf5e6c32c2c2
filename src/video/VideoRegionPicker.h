#pragma once

#include "RegionSelector.h"
#include "VideoTarget.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <optional>

class QScreen;
class VideoSources;

// The recording window's region overlay: a picture of the chosen display's screen, taken when the
// selection begins, dimmed, on which the region is dragged.
class VideoRegionPicker : public QObject {
    Q_OBJECT

public:
    VideoRegionPicker(VideoSources& sources, QObject* parent = nullptr);

    // Begins on the display's screen; false when the program has no such screen.
    bool start(const VideoDisplay& display);
    // Ends a selection under way as Escape does.
    void cancel();
    // The overlay on screen, once the picture is there.
    RegionSelector* overlay() const { return m_overlay; }

    // The screen that shows the display.
    static QScreen* screenOf(const VideoDisplay& display);

Q_SIGNALS:
    // Once per start: the region in the display's points, or none when the user cancelled or no
    // picture of the screen could be had (failed).
    void finished(const VideoDisplay& display, std::optional<QRectF> region, bool failed);

private:
    void show(const VideoDisplay& display, QScreen* screen, const QImage& picture);

    VideoSources& m_sources;
    QPointer<RegionSelector> m_overlay;
    quint64 m_selection = 0;
    std::optional<VideoDisplay> m_waiting; // for its picture
};
