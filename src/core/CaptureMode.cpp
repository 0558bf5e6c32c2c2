#include "CaptureMode.h"

#include <QHashFunctions>

using namespace Qt::StringLiterals;

namespace CaptureModes {

std::optional<CaptureMode> fromRawValue(quint32 rawValue)
{
    for (CaptureMode mode : allCases) {
        if (CaptureModes::rawValue(mode) == rawValue)
            return mode;
    }
    return std::nullopt;
}

QString title(CaptureMode mode)
{
    switch (mode) {
    case CaptureMode::region:
        return u"Alan seçerek yakala"_s;
    case CaptureMode::window:
        return u"Pencere yakala"_s;
    case CaptureMode::screen:
        return u"Ekranı yakala"_s;
    case CaptureMode::video:
        return u"Video kaydı başlat / durdur"_s;
    }
    return QString();
}

} // namespace CaptureModes

size_t qHash(CaptureMode mode, size_t seed) noexcept
{
    return qHash(CaptureModes::rawValue(mode), seed);
}
