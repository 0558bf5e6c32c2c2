#pragma once

#include "ImageFormat.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <optional>

// Writes a screenshot to disk: PNG (lossless) or JPEG at quality 95, all or nothing — a failed
// write leaves whatever was at the path untouched.
class ImageFileWriter {
public:
    static constexpr int jpegQuality = 95;

    struct Failure {
        enum Kind {
            // The encoder gave no data.
            encoding,
            // The system refused the file; systemReason is its own text.
            writing,
        };
        Kind kind = encoding;
        QString systemReason;
    };

    // The file's contents; empty when the encoder gives no data.
    static QByteArray encode(const QImage& image, ImageFormat format);

    // Encodes image and replaces the file at path atomically. None on success.
    static std::optional<Failure> write(const QImage& image, const QString& path, ImageFormat format);
};
