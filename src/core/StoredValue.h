#pragma once

#include <QVariant>
#include <QtGlobal>
#include <optional>

// Reading typed values back from the settings store. The INI backend hands every boolean and number
// back as a string ("true", "60"), so a value counts as a boolean when it is a bool or exactly the
// text "true" or "false", and as an integer when it is a number or a text holding one.
namespace StoredValue {

std::optional<bool> boolean(const QVariant& value);

// Fractions are truncated toward zero and oversized numbers saturate; anything that is not a finite
// number gives none.
std::optional<qint64> integer(const QVariant& value);

} // namespace StoredValue
