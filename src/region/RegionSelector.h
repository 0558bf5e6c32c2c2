#pragma once

#include "RegionSelection.h"
#include "RegionSelectionLook.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QRect>
#include <memory>
#include <optional>
#include <vector>

class QScreen;
class RegionSelectionWindow;

// The one way the program lets the user drag a rectangle over a frozen picture of the desktop: for
// a screenshot of an area, for `vexet-capture -i -s` and for a recording region. It shows one window
// per sheet (a monitor, or on X11 the whole desktop), keeps each drag on the sheet where it began,
// and delivers the chosen pixels of that sheet's picture once. Escape or the right button cancels.
class RegionSelector : public QObject {
    Q_OBJECT

public:
    struct Sheet {
        // What the sheet shows, in device pixels.
        QImage picture;
        // Where its window goes, in the desktop's logical coordinates.
        QRect geometry;
        // The monitor it covers full screen; none: one unmanaged borderless window over geometry,
        // above everything (the X11 desktop as a whole).
        QScreen* screen = nullptr;
        // Where the pointer can be, in the picture's pixels (see RegionSelection).
        QList<QRect> monitors;
        // Where a selection stays, in the picture's pixels.
        QRect bounds;
    };

    // minimumSide: the narrowest and lowest selection that counts, in logical pixels.
    RegionSelector(
        QList<Sheet> sheets, const RegionSelectionLook& look, double minimumSide, QObject* parent = nullptr);
    ~RegionSelector() override;

    // A sheet covering one monitor with the picture of it: the other monitors count for where the
    // pointer can go.
    static Sheet monitorSheet(QScreen* screen, const QImage& picture);

    void present();
    // Ends the selection as Escape does.
    void cancel();

    qsizetype sheetCount() const { return qsizetype(m_windows.size()); }
    RegionSelectionWindow* window(qsizetype sheet) const { return m_windows.at(std::size_t(sheet)).get(); }
    bool isFinished() const { return m_finished; }

Q_SIGNALS:
    // Once: the sheet and the pixels of its picture that were chosen, or none when cancelled.
    void finished(qsizetype sheet, std::optional<QRect> pixels);
    // A drag ended too small; the user may drag again.
    void refused();

private:
    void pressed(qsizetype sheet, Qt::MouseButton button, const QPointF& position);
    void moved(qsizetype sheet, const QPointF& position);
    void released(qsizetype sheet, Qt::MouseButton button, const QPointF& position);
    void finish(qsizetype sheet, std::optional<QRect> pixels);

    QList<Sheet> m_sheets;
    std::vector<std::unique_ptr<RegionSelectionWindow>> m_windows;
    double m_minimumSide;
    std::optional<RegionSelection> m_selection;
    qsizetype m_dragSheet = -1;
    bool m_rightPressed = false;
    bool m_finished = false;
};
