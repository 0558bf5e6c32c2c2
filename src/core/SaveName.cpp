#include "SaveName.h"

using namespace Qt::StringLiterals;

QString SaveName::extension(ImageFormat format)
{
    return format == ImageFormat::jpeg ? u".jpg"_s : u".png"_s;
}

QString SaveName::proposed(const QDateTime& now)
{
    return u"Vexet_"_s + now.toString(u"yyyy-MM-dd_HH-mm-ss"_s) + extension(ImageFormat::png);
}

QString SaveName::withFormat(const QString& name, ImageFormat format)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString base = dot > 0 ? name.left(dot) : name;
    return base + extension(format);
}
