#include "CapturePlan.h"

#include "RecordingTexts.h"
#include "RegionClip.h"

namespace {

Result<CaptureArea> display(const VideoDisplay& target, RecordingDesktopInterface& desktop)
{
    const std::optional<QRect> geometry = desktop.displayGeometry(target.outputId);
    if (!geometry || geometry->isEmpty())
        return videoError(RecordingTexts::displayGone());
    return CaptureArea { *geometry, 0, QSizeF(geometry->size()) };
}

Result<CaptureArea> region(const VideoRegion& target, RecordingDesktopInterface& desktop)
{
    const std::optional<QRect> geometry = desktop.displayGeometry(target.display.outputId);
    if (!geometry || geometry->isEmpty())
        return videoError(RecordingTexts::displayGone());
    const double scale = target.display.pointPixelScale > 0 ? target.display.pointPixelScale : 1.0;
    const QSizeF displayPoints = QSizeF(geometry->size()) / scale;
    const std::optional<QRectF> clipped = RegionClip::clip(target.rect, displayPoints);
    if (!clipped)
        return videoError(RecordingTexts::regionInvalid());
    const QRect pixels = RegionClip::pixels(*clipped, scale, geometry->size());
    return CaptureArea { pixels.translated(geometry->topLeft()), 0, clipped->size() * scale };
}

Result<CaptureArea> window(const VideoWindow& target, RecordingDesktopInterface& desktop)
{
    const std::optional<QRect> geometry
        = target.windowId ? desktop.windowGeometry(target.windowId) : std::nullopt;
    if (!geometry || geometry->isEmpty())
        return videoError(RecordingTexts::windowGone());
    return CaptureArea { *geometry, target.windowId, QSizeF(geometry->size()) };
}

} // namespace

Result<CaptureArea> CapturePlan::resolve(const VideoTarget& target, RecordingDesktopInterface& desktop)
{
    if (const auto* d = std::get_if<VideoDisplay>(&target))
        return display(*d, desktop);
    if (const auto* r = std::get_if<VideoRegion>(&target))
        return region(*r, desktop);
    return window(std::get<VideoWindow>(target), desktop);
}
