#pragma once

#include <QColor>
#include <QTimer>
#include <QWidget>

// A window whose content keeps moving: a solid background with a bar sweeping across it.
class MovingPicture : public QWidget {
public:
    // Unmanaged windows sit exactly where they are put; managed ones get a frame from the window manager.
    MovingPicture(const QRect& geometry, QColor background, bool managed);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_background;
    QTimer m_timer;
    int m_step = 0;
};
