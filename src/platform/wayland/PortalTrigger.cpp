#include "PortalTrigger.h"

#include "KeyTable.h"
#include "Shortcut.h"

#include <QStringList>
#include <array>
#include <xkbcommon/xkbcommon.h>

using namespace Qt::StringLiterals;

namespace PortalTrigger {

QString fromShortcut(quint32 keyCode, quint32 modifiers)
{
    const std::optional<KeyInfo> key = KeyTable::byKeyCode(keyCode);
    if (!key || key->keysym == 0)
        return QString();
    std::array<char, 64> name {};
    if (xkb_keysym_get_name(key->keysym, name.data(), name.size()) <= 0)
        return QString();

    QStringList parts;
    if (modifiers & Shortcut::controlKey)
        parts.append(u"CTRL"_s);
    if (modifiers & Shortcut::optionKey)
        parts.append(u"ALT"_s);
    if (modifiers & Shortcut::shiftKey)
        parts.append(u"SHIFT"_s);
    if (modifiers & Shortcut::cmdKey)
        parts.append(u"LOGO"_s);
    parts.append(QString::fromLatin1(name.data()));
    return parts.join(u'+');
}

} // namespace PortalTrigger
