#pragma once

#include "CaptureMode.h"
#include "Shortcut.h"
#include "ShortcutBinder.h"

#include <QHash>
#include <QWidget>
#include <functional>

class HotKeysInterface;
class Preferences;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;
class ShortcutRecorder;

// The settings window: the shortcuts as this desktop lets them be set, the automatic-copy switch
// and, where the program takes keys itself, the button that restores the default shortcuts. Where
// the program binds, one recorder per capture mode and the only place where shortcuts change;
// where the desktop binds, what it bound and the way to its own settings; where neither can, the
// commands to bind in the desktop's keyboard settings.
class SettingsController : public QWidget {
    Q_OBJECT
public:
    static constexpr int width = 610;
    static constexpr int height = 555;

    SettingsController(HotKeysInterface& hotKeys, Preferences& preferences, QWidget* parent = nullptr);

    // Called after the stored shortcuts changed.
    std::function<void()> onChange;

    void showWindow();
    void apply(const Shortcut& shortcut, CaptureMode mode);
    void copyChanged(bool on);
    void reset();
    // The registry's bindings or binder changed: the shortcut rows show them.
    void shortcutsChanged();

    ShortcutBinder binder() const { return m_binder; }
    // Where the program binds.
    ShortcutRecorder* recorder(CaptureMode mode) const { return m_recorders.value(mode); }
    QPushButton* resetButton() const { return m_reset; }
    // Where the desktop binds: its trigger for the mode; the button to its own settings, if offered.
    QLabel* triggerLabel(CaptureMode mode) const { return m_triggers.value(mode); }
    QPushButton* configureButton() const { return m_configure; }
    // Where the user binds: the mode's command and the button that copies it.
    QLineEdit* commandField(CaptureMode mode) const { return m_commands.value(mode); }
    QPushButton* commandCopyButton(CaptureMode mode) const { return m_commandCopies.value(mode); }
    QCheckBox* copyCheckBox() const { return m_copy; }
    QLabel* noteLabel() const { return m_note; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildShortcuts();
    QWidget* makeRow(CaptureMode mode);
    ShortcutRecorder* makeRecorder(CaptureMode mode);
    QWidget* makeTrigger(CaptureMode mode);
    QWidget* makeCommand(CaptureMode mode);
    void showTriggers();
    void stopRecording();

    HotKeysInterface& m_hotKeys;
    Preferences& m_preferences;
    ShortcutBinder m_binder;
    QVBoxLayout* m_stack = nullptr;
    QWidget* m_shortcuts = nullptr;
    QHash<CaptureMode, ShortcutRecorder*> m_recorders;
    QHash<CaptureMode, QLabel*> m_triggers;
    QHash<CaptureMode, QLineEdit*> m_commands;
    QHash<CaptureMode, QPushButton*> m_commandCopies;
    QPushButton* m_configure = nullptr;
    QCheckBox* m_copy = nullptr;
    QLabel* m_note = nullptr;
    QPushButton* m_reset = nullptr;
};
