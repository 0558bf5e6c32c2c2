#include "PortalShortcut.h"

#include <QDBusMetaType>

void PortalShortcut::registerTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<PortalShortcut>();
        qDBusRegisterMetaType<PortalShortcuts>();
        // QtDBus finds the types of slots and signals by the names written there.
        qRegisterMetaType<PortalShortcuts>("PortalShortcuts");
        return true;
    }();
    Q_UNUSED(registered)
}

PortalShortcuts PortalShortcut::listFrom(const QVariant& argument)
{
    if (argument.metaType() == QMetaType::fromType<PortalShortcuts>())
        return argument.value<PortalShortcuts>();
    if (argument.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    const auto dbusArgument = argument.value<QDBusArgument>();
    if (dbusArgument.currentSignature() != u"a(sa{sv})")
        return {};
    return qdbus_cast<PortalShortcuts>(dbusArgument);
}

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}
