#include "Pulse.h"

#include <QProcess>
#include <optional>

using namespace Qt::StringLiterals;

std::optional<QString> Pulse::pactl(const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C"_s); // the listings are read by their English labels
    process.setProcessEnvironment(environment);
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

bool Pulse::isPlaying(const QString& application)
{
    const std::optional<QString> listing = pactl({ u"list"_s, u"sink-inputs"_s });
    if (!listing)
        return false;
    const QString name = u"application.name = \"%1\""_s.arg(application);
    // One block per stream, each starting with its "Sink Input #N" line.
    for (const QString& block : listing->split(u"Sink Input #"_s)) {
        if (block.contains(name) && block.contains(u"Corked: no"_s))
            return true;
    }
    return false;
}
