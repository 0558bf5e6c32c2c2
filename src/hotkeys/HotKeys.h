#pragma once

#include "HotKeysInterface.h"

#include <QObject>
#include <QSet>

class GlobalKeys;
class Preferences;

// The application's system-wide shortcuts, one per capture mode, identified by the mode's raw
// value. A press reaches onCapture through the event loop, never inside the platform's handler.
class HotKeys : public QObject, public HotKeysInterface {
    Q_OBJECT
public:
    HotKeys(GlobalKeys& keys, Preferences& preferences, QObject* parent = nullptr);
    ~HotKeys() override;

    // Drops the mode's current combination first; a failure leaves the mode without any.
    int registerShortcut(const Shortcut& shortcut, CaptureMode mode) override;
    void suspend() override;
    QStringList resume() override;

    bool isRegistered(CaptureMode mode) const { return m_references.contains(mode); }
    qsizetype registeredCount() const { return m_references.size(); }

    // A press of the combination grabbed under this id.
    void pressed(int id);

private:
    GlobalKeys& m_keys;
    Preferences& m_preferences;
    QSet<CaptureMode> m_references;
};
