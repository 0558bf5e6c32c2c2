#include "SleepNotifier.h"

#include <QDBusConnection>

using namespace Qt::StringLiterals;

SleepNotifier::SleepNotifier(QObject* parent)
    : QObject(parent)
{
    QDBusConnection::systemBus().connect(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
        u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s, this, SLOT(prepareForSleep(bool)));
}

void SleepNotifier::prepareForSleep(bool start)
{
    if (start)
        Q_EMIT willSleep();
}
