#include "CaptureFileWriter.h"

#include "PngEncoder.h"

#include <QImageWriter>
#include <QSaveFile>

using namespace Qt::StringLiterals;

bool CaptureFileWriter::write(
    const QImage& image, const QString& path, CaptureRequest::Format format, QString* error)
{
    QSaveFile file(path);
    const auto fail = [&](const QString& reason) {
        file.cancelWriting();
        if (error)
            *error = u"%1 yazılamadı: %2"_s.arg(path, reason);
        return false;
    };
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());
    if (format == CaptureRequest::Format::png) {
        if (!PngEncoder::write(image, file))
            return fail(file.error() != QFileDevice::NoError ? file.errorString() : u"PNG kodlanamadı."_s);
    } else {
        QImageWriter writer(&file, "jpeg");
        writer.setQuality(jpegQuality);
        if (!writer.write(image))
            return fail(writer.errorString());
    }
    if (!file.commit())
        return fail(file.errorString());
    return true;
}
