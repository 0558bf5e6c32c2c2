#pragma once

#include "GlobalKeys.h"
#include "HotKeysInterface.h"

#include <QHash>
#include <QObject>
#include <QSet>

class Preferences;

// The application's system-wide shortcuts, one per capture mode, identified by the mode's raw
// value. A press reaches onCapture through the event loop, never inside the platform's handler.
// The registry holds the modes whose combination the platform confirmed; only their presses count.
class HotKeys : public QObject, public HotKeysInterface {
    Q_OBJECT
public:
    // The status registerShortcut returns while the desktop has not answered yet.
    static constexpr int pending = 1;

    HotKeys(GlobalKeys& keys, Preferences& preferences, QObject* parent = nullptr);
    ~HotKeys() override;

    ShortcutBinder binder() const override { return m_keys.binder(); }
    // Drops the mode's current combination first; a failure leaves the mode without any.
    int registerShortcut(const Shortcut& shortcut, CaptureMode mode) override;
    void suspend() override;
    QStringList resume() override;
    bool settled() const override { return m_pending.isEmpty(); }
    // The stored combination where the program binds; the desktop's description where it does.
    QString label(CaptureMode mode) const override;
    bool canConfigure() const override { return m_keys.canConfigure(); }
    void configure() override { m_keys.configure(); }

    bool isRegistered(CaptureMode mode) const { return m_references.contains(mode); }
    qsizetype registeredCount() const { return m_references.size(); }

    // A press of the combination registered under this id.
    void pressed(int id);

private:
    GlobalKeys::Request request(const Shortcut& shortcut, CaptureMode mode) const;
    void ask(const QList<GlobalKeys::Request>& requests);
    void bound(const QList<GlobalKeys::Binding>& bindings);

    GlobalKeys& m_keys;
    Preferences& m_preferences;
    QSet<CaptureMode> m_references;
    QSet<CaptureMode> m_pending;
    QHash<CaptureMode, int> m_status;
    QHash<CaptureMode, QString> m_triggers;
    bool m_asking = false;
};
