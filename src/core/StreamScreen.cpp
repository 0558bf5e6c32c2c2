#include "StreamScreen.h"

std::optional<qsizetype> StreamScreen::find(
    const QList<DesktopPicture::Monitor>& screens, std::optional<QPoint> position, QSize size)
{
    QList<qsizetype> fitting;
    for (qsizetype i = 0; i < screens.size(); ++i) {
        const QRect& geometry = screens.at(i).geometry;
        if (geometry.size() == size || (QSizeF(geometry.size()) * screens.at(i).scale).toSize() == size)
            fitting.append(i);
    }
    for (qsizetype i : std::as_const(fitting)) {
        if (position && screens.at(i).geometry.topLeft() == *position)
            return i;
    }
    if (fitting.size() == 1)
        return fitting.first();
    return std::nullopt;
}
