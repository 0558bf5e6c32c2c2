#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QWindow;

// Takes the keyboard and the pointer for an unmanaged X11 window once it is on screen, so that
// Escape reaches it and no click goes to another program while the user selects. Another program
// may hold them for a moment (a menu that is just closing): it tries again for a while, then gives
// up with failed().
class InputGrab : public QObject {
    Q_OBJECT

public:
    // How long other programs may keep the keyboard or pointer before we give up.
    static constexpr int patienceMs = 2000;

    explicit InputGrab(QWindow& window, QObject* parent = nullptr);
    ~InputGrab() override;

    // Starts trying; call when the window is exposed.
    void start();
    void release();
    bool isGrabbed() const { return m_grabbed; }

Q_SIGNALS:
    void grabbed();
    void failed(const QString& reason);

private:
    void tryToGrab();

    QPointer<QWindow> m_window;
    QTimer m_retry;
    QElapsedTimer m_clock;
    bool m_grabbed = false;
    bool m_started = false;
};
