#include "StoredValue.h"

#include <QMetaType>
#include <QString>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace StoredValue {

namespace {

// Numbers beyond the range of qint64 saturate, as an oversized text in the file should.
std::optional<qint64> truncated(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2^63, exactly representable
    if (!std::isfinite(number))
        return std::nullopt;
    if (number >= limit)
        return std::numeric_limits<qint64>::max();
    if (number < -limit)
        return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(std::trunc(number));
}

} // namespace

std::optional<bool> boolean(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        if (text == u"true"_s)
            return true;
        if (text == u"false"_s)
            return false;
    }
    return std::nullopt;
}

std::optional<qint64> integer(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? 1 : 0;
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return value.toLongLong();
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar: {
        const qulonglong number = value.toULongLong();
        if (number > static_cast<qulonglong>(std::numeric_limits<qint64>::max()))
            return std::numeric_limits<qint64>::max();
        return static_cast<qint64>(number);
    }
    case QMetaType::Double:
    case QMetaType::Float:
        return truncated(value.toDouble());
    case QMetaType::QString: {
        const QString text = value.toString().trimmed();
        bool ok = false;
        const qint64 number = text.toLongLong(&ok);
        if (ok)
            return number;
        const double fraction = text.toDouble(&ok);
        if (ok)
            return truncated(fraction);
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

} // namespace StoredValue
