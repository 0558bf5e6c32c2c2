#pragma once

#include "CompositorPictures.h"
#include "DevicePattern.h"
#include "SwayIpc.h"

#include <QImage>
#include <memory>

// Known pictures on both outputs of the Wayland test desktop: a full-screen pattern window on each,
// shown once the compositor shows exactly its pixels.
class PatternDesktop {
public:
    static constexpr int timeoutMs = 30000;

    PatternDesktop();

    // Each pattern full screen on its output again (another program's full-screen window takes the
    // output from it) and shown pixel for pixel; the pointer is left on the first output.
    bool show();
    void hide();
    // New windows, after an output changed its scale: Qt 6.4 keeps drawing an existing window at the
    // scale its output had when the window came onto it.
    void renew();

    // Half the side of the square around the pointer that the desktop's pictures draw the pointer in.
    static constexpr int pointerBox = 48;
    // Two pictures agree except in that square around the pointer.
    static bool equalBesidesPointer(const QImage& actual, const QImage& expected, QPoint pointer);

    DevicePattern* window(int output) const { return output == 0 ? m_first.get() : m_second.get(); }
    // The pixels shown on the first (0) or second (1) output, in its device pixels.
    QImage expected(int output) const;
    SwayIpc& sway() { return m_sway; }
    CompositorPictures& pictures() { return m_pictures; }

private:
    bool showOnce(int waitMs);

    SwayIpc m_sway;
    CompositorPictures m_pictures;
    std::unique_ptr<DevicePattern> m_first;
    std::unique_ptr<DevicePattern> m_second;
};
