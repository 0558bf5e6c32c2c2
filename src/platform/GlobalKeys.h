#pragma once

#include "ShortcutBinder.h"

#include <QList>
#include <QString>
#include <QtGlobal>
#include <functional>

// System-wide key combinations, each asked for under an id, and their presses reported by that id.
// Where the program takes keys itself the answer comes at once; where the desktop binds them it
// comes later, perhaps after asking the user, and again whenever the desktop changes a binding.
class GlobalKeys {
public:
    // One combination asked for: the portable key code and modifier mask of a Shortcut, a stable
    // name and a description for the desktop's own settings.
    struct Request {
        int id = 0;
        QString name;
        quint32 keyCode = 0;
        quint32 modifiers = 0;
        QString description;
    };

    // What became of an id: status 0 when a press of it will be reported, otherwise the platform's
    // negative status. trigger: the desktop's own description of the keys it bound, if it gives one.
    struct Binding {
        int id = 0;
        int status = 0;
        QString trigger;
    };

    // The status of every id where nothing on this desktop can bind keys.
    static constexpr int unavailable = -1000;

    virtual ~GlobalKeys() = default;

    virtual ShortcutBinder binder() const = 0;

    // Asks for the combinations; the answer for each id comes through onBound, inside this call or
    // later. An id asked for again replaces its earlier combination.
    virtual void bind(const QList<Request>& requests) = 0;
    // Presses of id are no longer reported; a desktop may keep the binding in its settings.
    virtual void release(int id) = 0;

    // The desktop's own settings for these combinations can be opened.
    virtual bool canConfigure() const { return false; }
    virtual void configure() { }

    std::function<void(const QList<Binding>& bindings)> onBound;
    // Called when a bound combination is pressed, inside the platform's event handling.
    std::function<void(int id)> onPressed;
};
