#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// The private PulseAudio of the virtual desktop, driven with pactl.
class Pulse {
public:
    // Runs pactl with the arguments; its standard output, or nothing on failure.
    static std::optional<QString> pactl(const QStringList& arguments);
    static QString defaultSource();
    static QString defaultSink();
    // Loads a module and returns its index, -1 on failure.
    static int load(const QString& module, const QStringList& arguments);
    static void unload(int index);
    // Whether a stream of the named application plays into a sink (is there and not corked).
    static bool isPlaying(const QString& application);
};
