#pragma once

#include "DesktopProbe.h"

#include <QImage>
#include <QRect>
#include <QString>

// The running program's recording window, driven from outside with real keys and pointer
// events. Where its controls sit is learnt from the same window laid out in this process.
class VideoWindowDriver {
public:
    enum class Control { kind, source };

    static inline const QString windowTitle = QStringLiteral("Vexet — Video kaydı");
    static inline const QString saveTitle = QStringLiteral("Video kaydını nereye kaydedelim?");
    // Alt+Shift+Super+G, the video command's default shortcut.
    static QList<quint32> videoKeys();
    // Alt+Shift+Super+5, the screen capture's default shortcut.
    static QList<quint32> screenKeys();

    explicit VideoWindowDriver(DesktopProbe& probe);

    // Lays the window out here with the given settings; false if that failed.
    bool learnLayout(const QString& settingsFile);
    void attach(qint64 pid) { m_pid = pid; }

    // Types the video shortcut and waits until the window is up with its sources listed.
    bool open();
    // Whether the recording window is on screen.
    bool isShown();
    // Opens the pop-up of a combo box with a click, moves `downs` items down and takes that one.
    bool choose(Control control, int downs);
    // Clicks "Kaydı başlat…".
    bool pressStart();
    // Waits for the save dialog and types `path` over the proposed name, like a user.
    bool typeIntoSaveDialog(const QString& path);
    // Presses Return in the save dialog and waits until it has gone.
    bool confirmSaveDialog();
    // The text the program's alert puts on the clipboard for Ctrl+C; the alert is then closed with
    // Return. Empty if no alert came or it did not close.
    QString readAndCloseAlert(int timeoutMs = 30000);

    // Why the last call that returned false failed.
    const QString& why() const { return m_why; }

private:
    bool fail(const QString& why);
    std::optional<xcb_window_t> window();
    bool waitForFocus(xcb_window_t window);
    bool click(const QRect& inWindow);

    DesktopProbe& m_probe;
    qint64 m_pid = 0;
    QRect m_kind;
    QRect m_source;
    QRect m_start;
    QRect m_info;
    QImage m_infoLoaded;
    QString m_why;
};
