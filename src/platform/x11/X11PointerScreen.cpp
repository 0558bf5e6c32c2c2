#include "X11PointerScreen.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

std::optional<int> X11PointerScreen::displayNumberUnderPointer() const
{
    const QPoint pointer = QCursor::pos();
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (qsizetype i = 0; i < screens.size(); ++i) {
        if (screens[i]->geometry().contains(pointer))
            return static_cast<int>(i) + 1;
    }
    return 1;
}
