#pragma once

#include <QString>
#include <QStringList>

// A modal alert in the program's voice: window title "Vexet", a message, an informative text and
// one "Tamam" button. The application is brought to the front first; returns when dismissed.
// Ctrl+C in the alert copies its text.
class Alert {
public:
    static void show(const QString& message, const QString& informativeText);

    // The same with the given buttons, first one the default; returns the index of the one chosen.
    static int ask(const QString& message, const QString& informativeText, const QStringList& buttons);
};
