#pragma once

#include <QObject>

class StatusNotifierWatcher;

// The tests' own handle on the watcher (org.vexet.test.TrayControl at /TrayControl): switches the
// pretended tray host on and off.
class WatcherControl : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.vexet.test.TrayControl")

public:
    static constexpr auto path = "/TrayControl";

    explicit WatcherControl(StatusNotifierWatcher& watcher, QObject* parent = nullptr);

public Q_SLOTS:
    void SetHostRegistered(bool registered);

private:
    StatusNotifierWatcher& m_watcher;
};
