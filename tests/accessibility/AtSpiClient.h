#pragma once

#include <QDBusConnection>
#include <QList>
#include <QRect>
#include <QString>
#include <optional>

// The AT-SPI roles (AtspiRole in atspi-constants.h) the tests look for.
enum class AtSpiRole : uint {
    alert = 2,
    canvas = 6,
    checkBox = 7,
    dialog = 16,
    filler = 20,
    frame = 23,
    image = 27,
    pushButton = 43,
    window = 69,
    application = 75,
};

// One accessible object on the accessibility bus: the bus name of its application and its path.
struct AtSpiNode {
    QString service;
    QString path;

    bool operator==(const AtSpiNode&) const = default;
};

// What a screen reader reads of the desktop: the AT-SPI registry and the accessible objects of
// the applications, on the session's accessibility bus, through AT-SPI's own D-Bus interfaces.
class AtSpiClient {
public:
    // Asks the session bus for the accessibility bus (D-Bus starts at-spi-bus-launcher on demand)
    // and connects to it.
    AtSpiClient();
    ~AtSpiClient();
    AtSpiClient(const AtSpiClient&) = delete;
    AtSpiClient& operator=(const AtSpiClient&) = delete;

    bool isConnected() const { return m_bus.isConnected(); }
    // Why there is no connection.
    const QString& error() const { return m_error; }

    // The root object of the application that the process registered with the registry.
    std::optional<AtSpiNode> application(qint64 pid) const;

    QList<AtSpiNode> children(const AtSpiNode& node) const;
    // Every object below node, depth first, node itself left out.
    QList<AtSpiNode> descendants(const AtSpiNode& node) const;
    std::optional<AtSpiRole> role(const AtSpiNode& node) const;
    // The role's name, for messages.
    QString roleName(const AtSpiNode& node) const;
    QString name(const AtSpiNode& node) const;
    // Whether the object is on screen: its states include AT-SPI's "showing".
    bool isShowing(const AtSpiNode& node) const;
    QString description(const AtSpiNode& node) const;
    // The object's rectangle on the screen.
    QRect extents(const AtSpiNode& node) const;
    // Runs the object's action of this name ("Press", "Toggle", ...); false when it has none.
    bool doAction(const AtSpiNode& node, const QString& actionName) const;

private:
    QVariant property(const AtSpiNode& node, const QString& name) const;
    QDBusMessage call(const AtSpiNode& node, const QString& interface, const QString& method,
        const QVariantList& arguments = {}) const;

    QString m_error;
    QDBusConnection m_bus;
};
