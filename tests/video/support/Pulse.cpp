#include "Pulse.h"

#include <QProcess>
#include <optional>

using namespace Qt::StringLiterals;

std::optional<QString> Pulse::pactl(const QStringList& arguments)
{
    QProcess process;
    process.start(u"pactl"_s, arguments);
    if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString Pulse::defaultSource()
{
    return pactl({ u"get-default-source"_s }).value_or(QString());
}

QString Pulse::defaultSink()
{
    return pactl({ u"get-default-sink"_s }).value_or(QString());
}

int Pulse::load(const QString& module, const QStringList& arguments)
{
    const std::optional<QString> index = pactl(QStringList { u"load-module"_s, module } + arguments);
    bool ok = false;
    const int value = index ? index->toInt(&ok) : -1;
    return ok ? value : -1;
}

void Pulse::unload(int index)
{
    if (index >= 0)
        pactl({ u"unload-module"_s, QString::number(index) });
}
