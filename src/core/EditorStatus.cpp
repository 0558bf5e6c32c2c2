#include "EditorStatus.h"

using namespace Qt::StringLiterals;

QString EditorStatus::text(const QSize& imagePixels, const QString& message)
{
    if (imagePixels.isEmpty())
        return {};
    QString result = QString::number(imagePixels.width()) + u" × "_s + QString::number(imagePixels.height())
        + u" piksel"_s;
    if (!message.isEmpty())
        result += u" • "_s + message;
    return result;
}

QString EditorStatus::copied()
{
    return u"Panoya kopyalandı"_s;
}

QString EditorStatus::saved(const QString& fileName)
{
    return u"Kaydedildi: "_s + fileName;
}
