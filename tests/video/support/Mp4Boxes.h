#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// The top-level boxes of an MP4 file, in order ("ftyp", "moov", "moof", "mdat", …). A box cut off by
// the end of the file is listed with a trailing "…".
QStringList topLevelBoxes(const QString& path);

// The offset just past the first top-level box of that type, -1 when there is none.
qint64 topLevelBoxEnd(const QString& path, const QString& type);
