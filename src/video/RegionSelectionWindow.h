#pragma once

#include <QWidget>

class QScreen;
class RegionSelectionView;

// A borderless window over exactly one monitor, above everything, holding the selection view.
class RegionSelectionWindow : public QWidget {
    Q_OBJECT
public:
    // Takes a picture of the monitor first, so the overlay shows it dimmed whether or not the
    // desktop composites translucent windows.
    explicit RegionSelectionWindow(QScreen* screen, QWidget* parent = nullptr);

    RegionSelectionView* view() const { return m_view; }
    void present();

private:
    QScreen* m_screen;
    RegionSelectionView* m_view = nullptr;
};
