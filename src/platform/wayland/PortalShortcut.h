#pragma once

#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariantMap>

// One entry of the GlobalShortcuts portal's a(sa{sv}) lists: an id with its properties
// ("description", "preferred_trigger" asked; "description", "trigger_description" answered).
struct PortalShortcut {
    QString id;
    QVariantMap properties;

    // Makes the entry and PortalShortcuts known to QtDBus, once; before any list is sent or read.
    static void registerTypes();
    // The list inside a reply's or signal's argument (an a(sa{sv}) that QtDBus left as a
    // QDBusArgument), or one put there by this process; empty when it has another shape.
    static QList<PortalShortcut> listFrom(const QVariant& argument);
};

using PortalShortcuts = QList<PortalShortcut>;

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut);

Q_DECLARE_METATYPE(PortalShortcut)
