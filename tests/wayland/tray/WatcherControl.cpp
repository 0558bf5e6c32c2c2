#include "WatcherControl.h"

#include "StatusNotifierWatcher.h"

WatcherControl::WatcherControl(StatusNotifierWatcher& watcher, QObject* parent)
    : QObject(parent)
    , m_watcher(watcher)
{
}

void WatcherControl::SetHostRegistered(bool registered)
{
    m_watcher.setPretendHost(registered);
}
