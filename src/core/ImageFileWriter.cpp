#include "ImageFileWriter.h"

#include <QBuffer>
#include <QImageWriter>
#include <QSaveFile>

QByteArray ImageFileWriter::encode(const QImage& image, ImageFormat format)
{
    if (image.isNull())
        return {};
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(
        &buffer, format == ImageFormat::jpeg ? QByteArrayLiteral("jpeg") : QByteArrayLiteral("png"));
    if (format == ImageFormat::jpeg)
        writer.setQuality(jpegQuality);
    // Whatever a failing encoder wrote before giving up is no image.
    if (!writer.write(image))
        return {};
    return data;
}

std::optional<ImageFileWriter::Failure> ImageFileWriter::write(
    const QImage& image, const QString& path, ImageFormat format)
{
    const QByteArray data = encode(image, format);
    if (data.isEmpty())
        return Failure { Failure::encoding, {} };
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return Failure { Failure::writing, file.errorString() };
    file.write(data);
    if (!file.commit())
        return Failure { Failure::writing, file.errorString() };
    return std::nullopt;
}
