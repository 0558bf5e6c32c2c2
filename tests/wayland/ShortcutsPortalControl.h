#pragma once

#include <QDBusConnection>
#include <QJsonObject>
#include <QString>
#include <optional>

// The shortcut tests' handle on the test backend of a PrivatePortal made with Shortcuts
// (org.vexet.test.ShortcutsControl on the portal's bus): presses a shortcut, gives it another key
// and reads what programs asked the backend for.
class ShortcutsPortalControl {
public:
    // bus: a connection to the portal's bus, PrivatePortal::connection() for instance.
    explicit ShortcutsPortalControl(const QDBusConnection& bus);

    // A press and release of the shortcut: the portal sends Activated, then Deactivated, to the
    // newest open session that bound id. False if there is none or the backend did not answer.
    bool activate(const QString& id);
    // The desktop's user gave the shortcut another key (a human-readable text such as "Ctrl+Alt+R",
    // "" for none): the portal sends ShortcutsChanged with the session's whole list. False if no
    // open session bound id or the backend did not answer.
    bool setTrigger(const QString& id, const QString& triggerDescription);
    // What the backend was given, the latest CreateSession and BindShortcuts:
    //   {"appId": "...", "createOptions": ["handle_token", ...], "createShortcuts": [shortcut...],
    //    "bound": [shortcut...], "bindOptions": ["handle_token", ...], "bindCalls": N,
    //    "parentWindow": "...", "openSessions": N, "closedSessions": N}, each shortcut {"id",
    //    "description", "preferredTrigger"}.
    // Nothing if the backend did not answer.
    std::optional<QJsonObject> received();

    QString errorString() const { return m_error; }

private:
    std::optional<QVariant> call(const QString& method, const QVariantList& arguments);

    QDBusConnection m_bus;
    QString m_error;
};
