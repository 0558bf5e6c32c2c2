#pragma once

#include <QString>

// The H.264 level that announces a stream of the given picture size and rate: the lowest level whose
// picture-size and macroblock-rate limits allow it, and never below 3, so that small pictures keep
// room for busy content. The level also bounds the encoder's bit rate, and players use it to decide
// whether they can play a file at all.
class H264Level {
public:
    static QString forFrames(int width, int height, int fps);
};
