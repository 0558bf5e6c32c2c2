#pragma once

#include "CaptureRequest.h"

#include <QImage>
#include <QString>

// Puts a capture into its file in one piece: the pixels go to a temporary file beside it that
// takes the file's name only once complete, so the file never holds half a picture and a failed
// write leaves whatever was there before.
class CaptureFileWriter {
public:
    static constexpr int jpegQuality = 90;

    // False with a reason (Turkish, naming the file) when the file could not be written.
    static bool write(
        const QImage& image, const QString& path, CaptureRequest::Format format, QString* error);
};
