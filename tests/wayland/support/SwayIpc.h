#pragma once

#include <QHash>
#include <QJsonDocument>
#include <QList>
#include <QRect>
#include <QString>
#include <functional>
#include <optional>

// The compositor of the Wayland test desktop, asked through `swaymsg -r` on $SWAYSOCK.
// Rectangles are in the desktop's logical coordinates, the ones QScreen::geometry() uses.
class SwayIpc {
public:
    struct Output {
        QString name;
        QRect rect;
        QSize modeSize; // in device pixels
        double scale = 1.0;
        bool focused = false;
        bool active = false;
    };

    struct Window {
        qint64 id = 0; // sway's container id
        qint64 pid = 0;
        QString appId;
        QString title;
        QString output;
        QRect rect;
        bool focused = false;
        bool visible = false;
        bool fullscreen = false;
    };

    SwayIpc() = default;
    ~SwayIpc();
    SwayIpc(const SwayIpc&) = delete;
    SwayIpc& operator=(const SwayIpc&) = delete;

    // The reply of `swaymsg -r -t TYPE` (get_outputs, get_tree, get_seats, ...).
    std::optional<QJsonDocument> query(const QString& type);
    // Runs sway commands; true if every one of them succeeded.
    bool command(const QString& commands);
    QString errorString() const { return m_error; }

    QList<Output> outputs();
    std::optional<Output> output(const QString& name);
    // The output whose rectangle holds the point.
    std::optional<Output> outputAt(QPoint point);

    QList<Window> windows();
    QList<Window> windowsOf(qint64 pid);
    // Waits until the process shows a window with this title (any title if empty).
    std::optional<Window> waitForWindow(qint64 pid, const QString& title, int timeoutMs = 20000);
    // Waits until the window (by container id) satisfies the condition, e.g. is focused.
    std::optional<Window> waitForWindowState(
        qint64 id, const std::function<bool(const Window&)>& condition, int timeoutMs = 20000);

    // Sets the output's scale and waits until sway reports it. The first scale seen for each
    // output is remembered and given back by restoreOutputScales() and the destructor.
    bool setOutputScale(const QString& name, double scale, int timeoutMs = 20000);
    bool restoreOutputScales(int timeoutMs = 20000);

    // Puts the seat's pointer at a point of the desktop (`seat - cursor set`); a parked pointer
    // stays out of pictures that must be exact. Needs the desktop's VNC servers (they give the
    // seat its pointer). No button may be held: sway's own pointer motion does not reach clients.
    bool parkPointer(QPoint point);

private:
    std::optional<QByteArray> run(const QStringList& arguments);

    QHash<QString, double> m_originalScales;
    QString m_error;
};
