#pragma once

#include <QSettings>

// The user's recording choices and the frame size they lead to.
struct VideoOptions {
    bool systemAudio = true;
    bool microphone = false;
    int fps = 30; // 30 or 60
    int quality = 0; // 0: 1080p, 1: 4K, 2: up to the H.264 limit
    bool cursor = true;

    struct Size {
        int width = 0;
        int height = 0;
        friend bool operator==(const Size&, const Size&) = default;
    };

    // The options last saved, with defaults for anything missing or unreadable.
    static VideoOptions saved();
    static VideoOptions saved(const QSettings& store);
    void save() const;
    void save(QSettings& store) const;

    // Encoded frame size for a source of the given size in pixels: fitted inside the quality's bounds
    // (never enlarged), even, at least 2 × 2.
    Size outputSize(double sourceWidth, double sourceHeight) const;

    friend bool operator==(const VideoOptions&, const VideoOptions&) = default;
};
