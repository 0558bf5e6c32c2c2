#pragma once

#include "CaptureMode.h"
#include "Shortcut.h"

#include <QHash>
#include <QWidget>
#include <functional>

class HotKeysInterface;
class Preferences;
class QCheckBox;
class QPushButton;
class ShortcutRecorder;

// The settings window: one shortcut recorder per capture mode, the automatic-copy switch and
// the button that restores the default shortcuts. The only place where shortcuts change.
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

    ShortcutRecorder* recorder(CaptureMode mode) const { return m_recorders.value(mode); }
    QCheckBox* copyCheckBox() const { return m_copy; }
    QPushButton* resetButton() const { return m_reset; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    ShortcutRecorder* makeRecorder(CaptureMode mode);
    void stopRecording();

    HotKeysInterface& m_hotKeys;
    Preferences& m_preferences;
    QHash<CaptureMode, ShortcutRecorder*> m_recorders;
    QCheckBox* m_copy = nullptr;
    QPushButton* m_reset = nullptr;
};
