#include "Mp4Boxes.h"

#include <QFile>
#include <QtEndian>

namespace {

struct Box {
    QString type;
    qint64 end = 0;
    bool complete = true;
};

QList<Box> boxes(const QString& path)
{
    QList<Box> boxes;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return boxes;
    const qint64 size = file.size();
    qint64 offset = 0;
    while (offset + 8 <= size) {
        file.seek(offset);
        const QByteArray header = file.read(16);
        if (header.size() < 8)
            break;
        quint64 length = qFromBigEndian<quint32>(header.constData());
        const QString type = QString::fromLatin1(header.mid(4, 4));
        if (length == 1 && header.size() == 16)
            length = qFromBigEndian<quint64>(header.constData() + 8);
        else if (length == 0)
            length = static_cast<quint64>(size - offset);
        if (length < 8 || offset + static_cast<qint64>(length) > size) {
            boxes.append({ type, size, false });
            break;
        }
        offset += static_cast<qint64>(length);
        boxes.append({ type, offset, true });
    }
    return boxes;
}

} // namespace

QStringList topLevelBoxes(const QString& path)
{
    QStringList names;
    for (const Box& box : boxes(path))
        names.append(box.complete ? box.type : box.type + QStringLiteral("…"));
    return names;
}

qint64 topLevelBoxEnd(const QString& path, const QString& type)
{
    for (const Box& box : boxes(path)) {
        if (box.type == type && box.complete)
            return box.end;
    }
    return -1;
}
