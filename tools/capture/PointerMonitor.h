#pragma once

#include "RegionSelectionWindow.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QTimer>
#include <memory>
#include <vector>

// Which monitor the pointer is on, learned the one way a Wayland client can without anything
// visible flashing: every monitor shows its own frozen picture, unchanged, in a full-screen window
// for a moment, and the compositor says which window the pointer is in. A desktop that says nothing
// in time gets the primary monitor.
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
    void answer(qsizetype monitor);

    std::vector<std::unique_ptr<RegionSelectionWindow>> m_windows;
    QTimer m_patience;
    qsizetype m_exposed = 0;
    bool m_answered = false;
};
