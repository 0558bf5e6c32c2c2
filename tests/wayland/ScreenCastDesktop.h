#pragma once

#include <QString>

// The ScreenCast side of the Wayland test desktop (started with --screencast-backend): its stand-in
// output chooser, and its backend, which can end sessions as a desktop does when the user stops
// sharing.
class ScreenCastDesktop {
public:
    // The output the chooser answers from now on ("HEADLESS-2"), or "cancel".
    static bool answer(const QString& output);
    // How often the chooser has been asked so far.
    static int choices();
    // Every ScreenCast session the backend holds, closed by the backend itself (of the clients whose
    // unique bus name is given, or of all of them).
    static int closeSessions(const QString& client = {});
};
