#pragma once

#include <QSize>
#include <QString>

// The status line of the editor window: the current image's size in pixels and, after a copy or a
// save, what happened, e.g. "1440 × 900 piksel • Panoya kopyalandı".
class EditorStatus {
public:
    // Empty when there is no image (an empty size).
    static QString text(const QSize& imagePixels, const QString& message = {});

    // "Panoya kopyalandı".
    static QString copied();

    // "Kaydedildi: " and the saved file's name.
    static QString saved(const QString& fileName);
};
