#pragma once

// The system beep of every refusal. Counted, so tests can tell a refusal from silence.
class Beeper {
public:
    static void beep();
    static int count();
};
