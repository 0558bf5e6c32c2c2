#pragma once

#include <QIODevice>
#include <QImage>

// Writes PNG files quickly, because every capture pays for it: 8-bit RGB, the Sub filter on
// every row and zlib's run-length compression, with bands of rows compressed on several threads
// into pieces of one deflate stream. A 4K desktop takes a fraction of what a general PNG writer
// needs, at a comparable size.
class PngEncoder {
public:
    // Writes image (any format; the alpha channel is dropped) to device. False when the image is
    // null, compression fails or the device refuses the data.
    static bool write(const QImage& image, QIODevice& device);
};
