#pragma once

#include <QString>

// A modal alert in the program's voice: window title "Vexet", a message, an informative text and
// one "Tamam" button. The application is brought to the front first; returns when dismissed.
class Alert {
public:
    static void show(const QString& message, const QString& informativeText);
};
