#include "Preferences.h"

#include "StoredValue.h"

#include <QVariant>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const auto copyAutomaticallyKey = "copyAutomatically"_L1;
const auto hasWelcomedKey = "hasWelcomed"_L1;
const auto hasExplainedCommandsKey = "hasExplainedCommands"_L1;

} // namespace

Preferences::Preferences(std::unique_ptr<QSettings> store)
    : m_defaults(std::move(store))
{
}

Preferences& Preferences::shared()
{
    static Preferences instance(
        std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, u"Vexet"_s, u"Vexet"_s));
    return instance;
}

QString Preferences::shortcutKey(CaptureMode mode)
{
    return u"shortcut."_s + QString::number(CaptureModes::rawValue(mode));
}

Shortcut Preferences::shortcut(CaptureMode mode) const
{
    // Only data counts: a text or number under the key is as good as nothing.
    const QVariant stored = m_defaults->value(shortcutKey(mode));
    if (stored.typeId() == QMetaType::QByteArray) {
        if (std::optional<Shortcut> decoded = Shortcut::fromJson(stored.toByteArray()))
            return *decoded;
    }
    return Shortcut::defaultShortcut(mode);
}

void Preferences::set(const Shortcut& shortcut, CaptureMode mode)
{
    m_defaults->setValue(shortcutKey(mode), shortcut.toJson());
}

bool Preferences::copyAutomatically() const
{
    return StoredValue::boolean(m_defaults->value(copyAutomaticallyKey)).value_or(true);
}

void Preferences::setCopyAutomatically(bool on)
{
    m_defaults->setValue(copyAutomaticallyKey, on);
}

bool Preferences::hasWelcomed() const
{
    return StoredValue::boolean(m_defaults->value(hasWelcomedKey)).value_or(false);
}

void Preferences::setHasWelcomed(bool welcomed)
{
    m_defaults->setValue(hasWelcomedKey, welcomed);
}

bool Preferences::hasExplainedCommands() const
{
    return StoredValue::boolean(m_defaults->value(hasExplainedCommandsKey)).value_or(false);
}

void Preferences::setHasExplainedCommands(bool explained)
{
    m_defaults->setValue(hasExplainedCommandsKey, explained);
}
