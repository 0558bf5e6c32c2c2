#pragma once

#include <QString>
#include <optional>

// What one run of vexet-capture is asked to do.
struct CaptureRequest {
    enum class Mode {
        // One whole monitor: -D N, or the one under the pointer.
        screen,
        // A rectangle dragged on the frozen desktop (-i -s).
        region,
        // A window picked on the frozen desktop, with its frame (-i -w).
        window,
    };
    enum class Format {
        png,
        jpeg,
    };

    Mode mode = Mode::screen;
    // 1-based, in the order of QGuiApplication::screens(); none: the monitor under the pointer. For
    // Mode::screen only.
    std::optional<int> display;
    Format format = Format::png;
    QString path;
};
