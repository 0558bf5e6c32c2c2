#pragma once

#include <QDBusMessage>
#include <QList>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <optional>

// The tray of the Wayland test desktop, seen as a panel sees it: the items registered with the
// StatusNotifier watcher, their properties and their menus (com.canonical.dbusmenu). Also switches
// the watcher's pretended host, to make the desktop look tray-less and back.
//
// Calls keep the event loop running while they wait (up to 20 s each), so a test may look at a
// tray icon of its own process.
class TrayProbe {
public:
    struct MenuEntry {
        int id = 0;
        QString label; // without the mnemonic marks ("_Save" and "&Save" are "Save")
        QString rawLabel; // as the program sent it
        bool enabled = true;
        bool visible = true;
        bool separator = false;
        QString toggleType; // "", "checkmark" or "radio"
        int toggleState = -1; // 0 off, 1 on, -1 not a toggle
        QList<MenuEntry> children;
    };

    // Registered items, as the watcher names them: "BUS_NAME/OBJECT_PATH".
    QStringList items();
    // Waits for a registered item; of the process `pid` if not 0. Empty if none came.
    QString waitForItem(qint64 pid = 0, int timeoutMs = 20000);
    // The process that owns the item's bus name, 0 if unknown.
    qint64 itemPid(const QString& item);
    // A property of the item (org.kde.StatusNotifierItem): Title, Status, IconName, ToolTip, Menu, ...
    QVariant itemProperty(const QString& item, const QString& name);
    // What a left click on the icon does (StatusNotifierItem.Activate).
    bool activate(const QString& item, QPoint position = QPoint());

    // The item's menu as the panel would show it (AboutToShow, then GetLayout of the whole tree).
    std::optional<QList<MenuEntry>> menu(const QString& item);
    // Clicks the first visible entry with this label, searched depth-first (labels compared
    // without mnemonic marks). Fails for a disabled entry.
    bool clickMenuEntry(const QString& item, const QString& label);

    std::optional<bool> isHostRegistered();
    // Switches the pretended tray host; the watcher tells everyone as a panel's start or exit would.
    bool setHostRegistered(bool registered);

    QString errorString() const { return m_error; }

    static QString withoutMnemonic(const QString& label);
    static const MenuEntry* find(const QList<MenuEntry>& entries, const QString& label);

private:
    std::optional<QDBusMessage> call(const QString& service, const QString& path, const QString& interface,
        const QString& method, const QVariantList& arguments = {});
    std::optional<QVariant> property(
        const QString& service, const QString& path, const QString& interface, const QString& name);
    std::optional<QString> menuPath(const QString& item, QString* service);

    QString m_error;
};
