#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

// The program's own visible windows, put out of sight while the screen is being captured and
// brought back afterwards. Only the windows that were visible are touched; minimised windows,
// popups, tooltips and the tray icon stay as they are.
class OwnWindows {
public:
    // Hides every window that is visible now and remembers them.
    void hide();
    // Shows again exactly the windows that hide() took away (those still alive), in their order.
    void show();

    const QList<QPointer<QWidget>>& hidden() const { return m_hidden; }

    // The program's windows that are on screen now (not minimised; no popups, tooltips or tray).
    static QList<QWidget*> visibleWindows();

private:
    QList<QPointer<QWidget>> m_hidden;
};
