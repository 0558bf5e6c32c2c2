#pragma once

#include <QObject>
#include <memory>

class QSocketNotifier;

// Turns SIGTERM and SIGINT into a Qt signal on the main thread (self-pipe), so that a quit
// request from the session or the terminal takes the same path as the menu's "Çıkış".
class UnixSignals : public QObject {
    Q_OBJECT
public:
    explicit UnixSignals(QObject* parent = nullptr);
    ~UnixSignals() override;

    // False when the pipe or the handlers could not be set up; the default actions then stay.
    bool isWatching() const { return m_notifier != nullptr; }

Q_SIGNALS:
    void terminationRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier* m_notifier = nullptr;
};
