#include "CapturePlan.h"

#include "RecordingTexts.h"
#include "RegionClip.h"

namespace {

Result<CaptureArea> display(const VideoDisplay& target, RecordingDesktopInterface& desktop)
{
    const std::optional<QRect> geometry = desktop.displayGeometry(target.sourceId);
    if (!geometry || geometry->isEmpty())
        return videoError(RecordingTexts::displayGone());
    return CaptureArea { {}, target.sourceId, false, *geometry, *geometry, QSizeF(geometry->size()) };
}

Result<CaptureArea> region(const VideoRegion& target, RecordingDesktopInterface& desktop)
{
    const std::optional<QRect> geometry = desktop.displayGeometry(target.display.sourceId);
    if (!geometry || geometry->isEmpty())
        return videoError(RecordingTexts::displayGone());
    const double scale = target.display.pointPixelScale > 0 ? target.display.pointPixelScale : 1.0;
    const QSizeF displayPoints = QSizeF(geometry->size()) / scale;
    const std::optional<QRectF> clipped = RegionClip::clip(target.rect, displayPoints);
    if (!clipped)
        return videoError(RecordingTexts::regionInvalid());
    const QRect pixels = RegionClip::pixels(*clipped, scale, geometry->size());
    return CaptureArea { {}, target.display.sourceId, false, pixels.translated(geometry->topLeft()),
        *geometry, clipped->size() * scale };
}

Result<CaptureArea> window(const VideoWindow& target, RecordingDesktopInterface& desktop)
{
    const std::optional<QRect> geometry
        = target.sourceId ? desktop.windowGeometry(target.sourceId) : std::nullopt;
    if (!geometry || geometry->isEmpty())
        return videoError(RecordingTexts::windowGone());
    return CaptureArea { {}, target.sourceId, true, *geometry, *geometry, QSizeF(geometry->size()) };
}

Result<CaptureArea> located(const VideoTarget& target, RecordingDesktopInterface& desktop)
{
    if (const auto* d = std::get_if<VideoDisplay>(&target))
        return display(*d, desktop);
    if (const auto* r = std::get_if<VideoRegion>(&target))
        return region(*r, desktop);
    return window(std::get<VideoWindow>(target), desktop);
}

} // namespace

Result<CaptureArea> CapturePlan::resolve(const VideoTarget& target, RecordingDesktopInterface& desktop)
{
    Result<CaptureArea> area = located(target, desktop);
    if (!area)
        return area;
    const std::optional<CaptureStream> stream = desktop.stream(area.value().sourceId);
    if (!stream)
        return videoError(area.value().window ? RecordingTexts::windowGone() : RecordingTexts::displayGone());
    area.value().stream = *stream;
    return area;
}
