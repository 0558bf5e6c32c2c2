#pragma once

#include <QString>

// What one run of vexet-capture is asked to do.
struct CaptureRequest {
    enum class Mode {
        // One whole monitor (-D N).
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
    // 1-based, in the order of QGuiApplication::screens(); for Mode::screen only.
    int display = 1;
    Format format = Format::png;
    QString path;
};
