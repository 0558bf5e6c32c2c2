#pragma once

#include "RegionSelectionWindow.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>
#include <vector>

// Which monitor the pointer is on, learned the one way a Wayland client can without anything
// visible flashing: every monitor shows its own frozen picture, unchanged, in a full-screen window
// for a moment, and the compositor says which window the pointer is in. A desktop that says nothing
// in time gets the primary monitor.
//
// A desktop gives the keyboard to the window that came last, and gives it back on that window's
// monitor when the window goes; the next window (the editor) then opens there. So the window of the
// monitor found must be the last one shown: if it was not, it is shown once more before all go.
class PointerMonitor : public QObject {
    Q_OBJECT

public:
    // How long to wait for the compositor once every window is on screen.
    static constexpr int patienceMs = 750;

    // pictures: one per screen of QGuiApplication::screens(), in device pixels.
    explicit PointerMonitor(const QList<QImage>& pictures);
    ~PointerMonitor() override;

    void start();

Q_SIGNALS:
    // 0-based, in the order of QGuiApplication::screens().
    void found(qsizetype monitor);

private:
    void exposed(qsizetype monitor);
    void answer(qsizetype monitor);
    void finish();

    std::vector<std::unique_ptr<RegionSelectionWindow>> m_windows;
    QList<qsizetype> m_exposedOrder;
    QTimer m_patience;
    std::optional<qsizetype> m_answer;
    bool m_showingAgain = false;
    bool m_finished = false;
};
