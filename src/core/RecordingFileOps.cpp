#include "RecordingFileOps.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

Error systemError(int code)
{
    return Error(u"POSIX"_s, code, QString::fromLocal8Bit(std::strerror(code)));
}

} // namespace

std::optional<Error> RecordingFileOps::createEmpty(const QString& path)
{
    const int file
        = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0)
        return systemError(errno);
    ::close(file);
    return std::nullopt;
}

std::optional<qint64> RecordingFileOps::size(const QString& path)
{
    struct stat info { };
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return static_cast<qint64>(info.st_size);
}

std::optional<Error> RecordingFileOps::move(const QString& from, const QString& to)
{
    if (::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        return systemError(errno);
    return std::nullopt;
}

void RecordingFileOps::remove(const QString& path)
{
    ::unlink(QFile::encodeName(path).constData());
}
