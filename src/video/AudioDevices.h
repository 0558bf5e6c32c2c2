#pragma once

#include <QString>
#include <optional>

// The sound server's devices, as GStreamer's device providers see them.
class AudioDevices {
public:
    // The name of the default input device when it is a real input: not the monitor of an output
    // (which would record the speakers, not a microphone). Nothing when there is no such device.
    static std::optional<QString> defaultMicrophone();
    // The monitor of the default output device: what the speakers play. Nothing when there is no
    // default output.
    static std::optional<QString> defaultOutputMonitor();
};
