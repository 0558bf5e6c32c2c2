#include "VideoRegionPicker.h"

#include "Beeper.h"
#include "RegionClip.h"
#include "RegionSelectionLook.h"
#include "VideoSources.h"

#include <QGuiApplication>
#include <QScreen>

VideoRegionPicker::VideoRegionPicker(VideoSources& sources, QObject* parent)
    : QObject(parent)
    , m_sources(sources)
{
}

QScreen* VideoRegionPicker::screenOf(const VideoDisplay& display)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (QScreen* screen : screens) {
        if (screen->geometry().topLeft() == display.geometry.topLeft())
            return screen;
    }
    return nullptr;
}

bool VideoRegionPicker::start(const VideoDisplay& display)
{
    QScreen* screen = screenOf(display);
    if (!screen)
        return false;
    // The monitor as it looked when the selection began, so the overlay shows it dimmed whether or
    // not the desktop composites translucent windows.
    const quint64 selection = ++m_selection;
    m_waiting = display;
    QPointer<VideoRegionPicker> self(this);
    m_sources.screenPicture(
        screen, [self, selection, display, screen = QPointer(screen)](const QImage& picture) {
            if (self && self->m_selection == selection)
                self->show(display, screen, picture);
        });
    return true;
}

void VideoRegionPicker::show(const VideoDisplay& display, QScreen* screen, const QImage& picture)
{
    m_waiting.reset();
    if (!screen || picture.isNull()) {
        Q_EMIT finished(display, std::nullopt, true);
        return;
    }
    m_overlay = new RegionSelector({ RegionSelector::monitorSheet(screen, picture) },
        RegionSelectionLook::recording(), RegionClip::minimumSide, this);
    connect(m_overlay, &RegionSelector::refused, this, [] { Beeper::beep(); });
    connect(m_overlay, &RegionSelector::finished, this,
        [this, display, ratio = screen->devicePixelRatio()](qsizetype, std::optional<QRect> pixels) {
            if (m_overlay)
                m_overlay->deleteLater();
            m_overlay = nullptr;
            // The region is kept in the monitor's points.
            std::optional<QRectF> points;
            if (pixels)
                points = QRectF(QPointF(pixels->topLeft()) / ratio, QSizeF(pixels->size()) / ratio);
            Q_EMIT finished(display, points, false);
        });
    m_overlay->present();
}

void VideoRegionPicker::cancel()
{
    if (m_overlay) {
        m_overlay->cancel();
        return;
    }
    // Still waiting for the picture: it will not be shown.
    if (const std::optional<VideoDisplay> waiting = std::exchange(m_waiting, std::nullopt)) {
        ++m_selection;
        Q_EMIT finished(*waiting, std::nullopt, false);
    }
}
