#include "RecordingFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

const auto stagingPrefix = u".Vexet-recording-"_s;
const auto recoveryPrefix = u"Vexet-kurtarma-"_s;
const auto mixPrefix = u".Vexet-mix-"_s;
const auto extension = u".mp4"_s;

} // namespace

QString RecordingFiles::newUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QString RecordingFiles::stagingPath(const QString& destination)
{
    return beside(destination, stagingPrefix + newUuid() + extension);
}

QString RecordingFiles::recoveryPath(const QString& staging)
{
    return beside(staging, recoveryPrefix + newUuid() + extension);
}

QString RecordingFiles::mixPath(const QString& input)
{
    return beside(input, mixPrefix + newUuid() + extension);
}

bool RecordingFiles::isStagingName(const QString& fileName)
{
    return matches(fileName, stagingPrefix);
}

bool RecordingFiles::isRecoveryName(const QString& fileName)
{
    return matches(fileName, recoveryPrefix);
}

bool RecordingFiles::isMixName(const QString& fileName)
{
    return matches(fileName, mixPrefix);
}

QString RecordingFiles::beside(const QString& path, const QString& fileName)
{
    return QDir(QFileInfo(path).absolutePath()).filePath(fileName);
}

bool RecordingFiles::matches(const QString& fileName, const QString& prefix)
{
    static const QRegularExpression uuid(
        u"^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.mp4$"_s);
    return fileName.startsWith(prefix) && uuid.match(QStringView(fileName).mid(prefix.size())).hasMatch();
}
