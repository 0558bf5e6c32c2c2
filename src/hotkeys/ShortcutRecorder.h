#pragma once

#include "Shortcut.h"

#include <QPushButton>
#include <functional>

// A button that shows a shortcut and, once clicked, records the next valid combination typed in
// the application. It stores and registers nothing: it reports to its owner.
class ShortcutRecorder : public QPushButton {
    Q_OBJECT
public:
    explicit ShortcutRecorder(const Shortcut& shortcut, QWidget* parent = nullptr);
    ~ShortcutRecorder() override;

    std::function<void(const Shortcut&)> onRecord;
    std::function<void()> onBegin;
    std::function<void()> onEnd;

    // Starts recording; a click while recording cancels instead.
    void begin();
    // Stops recording: the previous title comes back and onEnd runs.
    void finish();
    bool isRecording() const { return m_recording; }

    static QString recordingTitle();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void keyPressed(const QKeyEvent& event);

    bool m_recording = false;
    QString m_previousTitle;
};
