#include "FragmentedMp4.h"

#include <QFile>
#include <QtEndian>

std::optional<qint64> FragmentedMp4::completeLength(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const qint64 size = file.size();
    qint64 offset = 0;
    qint64 complete = 0;
    bool fragmentOpen = false; // a "moof" whose "mdat" has not come yet
    while (offset + 8 <= size) {
        if (!file.seek(offset))
            return std::nullopt;
        const QByteArray header = file.read(16);
        if (header.size() < 8)
            break;
        quint64 length = qFromBigEndian<quint32>(header.constData());
        const QByteArray type = header.mid(4, 4);
        if (offset == 0 && type != "ftyp")
            return std::nullopt;
        if (length == 1 && header.size() == 16)
            length = qFromBigEndian<quint64>(header.constData() + 8);
        else if (length == 0)
            length = static_cast<quint64>(size - offset); // runs to the end of the file
        if (length < 8 || length > static_cast<quint64>(size - offset))
            break;
        offset += static_cast<qint64>(length);
        if (type == "moof") {
            fragmentOpen = true;
        } else if (type == "mdat" || !fragmentOpen) {
            fragmentOpen = false;
            complete = offset;
        }
    }
    return complete;
}

bool FragmentedMp4::trimIncompleteEnd(const QString& path)
{
    const std::optional<qint64> length = completeLength(path);
    if (!length || *length == 0)
        return false;
    QFile file(path);
    if (file.size() == *length)
        return true;
    return file.resize(*length);
}
