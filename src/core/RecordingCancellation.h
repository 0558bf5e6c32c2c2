#pragma once

#include "Error.h"

// The error that stands for "the user cancelled the recording". The recorder passes it to its owner
// unchanged and keeps no file for it; the owner shows its own cancel text instead of a failure.
class RecordingCancellation {
public:
    static Error error();
    static bool matches(const Error& error);
};
