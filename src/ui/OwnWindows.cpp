#include "OwnWindows.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace {

bool isOrdinaryWindow(const QWidget* window)
{
    const Qt::WindowType type = window->windowType();
    if (type != Qt::Window && type != Qt::Dialog && type != Qt::Tool)
        return false;
    // The tray icon is a window of Qt's own on X11; it stays in the tray.
    return window->objectName() != u"QSystemTrayIconSys"_s;
}

} // namespace

QList<QWidget*> OwnWindows::visibleWindows()
{
    QList<QWidget*> result;
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->isVisible() && !window->isMinimized() && isOrdinaryWindow(window))
            result.append(window);
    }
    return result;
}

void OwnWindows::hide()
{
    m_hidden.clear();
    const QList<QWidget*> windows = visibleWindows();
    for (QWidget* window : windows)
        m_hidden.append(window);
    for (const QPointer<QWidget>& window : std::as_const(m_hidden))
        window->hide();
}

void OwnWindows::show()
{
    const QList<QPointer<QWidget>> windows = std::exchange(m_hidden, {});
    for (const QPointer<QWidget>& window : windows) {
        if (window)
            window->show();
    }
    if (!windows.isEmpty() && windows.last()) {
        windows.last()->raise();
        windows.last()->activateWindow();
    }
}
