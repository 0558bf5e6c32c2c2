#pragma once

#include "ImageFormat.h"

#include <QDateTime>
#include <QString>

// The file name proposed for a screenshot, e.g. "Vexet_2025-01-02_03-04-05.png", and its
// extension following the chosen format.
class SaveName {
public:
    // ".png" or ".jpg".
    static QString extension(ImageFormat format);

    // "Vexet_" + the local date and time as yyyy-MM-dd_HH-mm-ss + ".png".
    static QString proposed(const QDateTime& now);

    // name without its extension (if it has one), then the extension of format. A leading dot
    // starts a hidden name, not an extension.
    static QString withFormat(const QString& name, ImageFormat format);
};
