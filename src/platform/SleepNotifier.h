#pragma once

#include <QObject>

// Tells when the machine is about to sleep (logind's PrepareForSleep on the system bus). Without a
// system bus or logind it simply never fires.
class SleepNotifier : public QObject {
    Q_OBJECT
public:
    explicit SleepNotifier(QObject* parent = nullptr);

Q_SIGNALS:
    void willSleep();

private Q_SLOTS:
    void prepareForSleep(bool start);
};
