#pragma once

#include <QString>

// The recorder's states, in their order of progress.
enum class RecorderState { Idle, Starting, Recording, Stopping, Saving };

// "idle", "starting", … for logs and the developer tools.
QString recorderStateName(RecorderState state);
