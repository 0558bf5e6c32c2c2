#pragma once

#include <QObject>
#include <QString>

class ShortcutsBackend;

// The tests' own handle on the shortcuts backend (org.vexet.test.ShortcutsControl at
// /ShortcutsControl, beside the backend on the same bus): presses a bound shortcut, gives it
// another key and tells what programs asked for.
class ShortcutsControl : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.vexet.test.ShortcutsControl")

public:
    static constexpr auto path = "/ShortcutsControl";

    explicit ShortcutsControl(ShortcutsBackend& backend, QObject* parent = nullptr);

public Q_SLOTS:
    // A press and release of the shortcut in the newest open session that bound id: false if none.
    bool Activate(const QString& id);
    // The desktop's user gave the shortcut another key (triggerDescription, "" for none): false if
    // no open session bound id.
    bool SetTrigger(const QString& id, const QString& triggerDescription);
    // JSON: {"appId", "createOptions": [option keys of the latest CreateSession], "createShortcuts":
    // [its "shortcuts" option], "bound": [the latest BindShortcuts' shortcuts], "bindOptions":
    // [its option keys], "bindCalls", "parentWindow", "openSessions", "closedSessions"}; each
    // shortcut {"id", "description", "preferredTrigger"}.
    QString Received() const;

private:
    ShortcutsBackend& m_backend;
};
