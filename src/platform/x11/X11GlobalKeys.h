#pragma once

#include "GlobalKeys.h"

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>
#include <xcb/xcb.h>

// Grabs key combinations on the root window of the application's own X connection and picks
// their presses out of Qt's event stream. Each combination is grabbed four times, with and
// without Caps Lock and Num Lock, so a lit lock key does not stop it.
class X11GlobalKeys : public GlobalKeys, public QAbstractNativeEventFilter {
public:
    // The connection must be the one Qt reads events from.
    X11GlobalKeys(xcb_connection_t* connection, xcb_window_t root);
    ~X11GlobalKeys() override;

    ShortcutBinder binder() const override { return ShortcutBinder::program; }
    // Grabs each combination in turn and answers at once.
    void bind(const QList<Request>& requests) override;
    void release(int id) override { ungrab(id); }

    // Grabs the combination of a portable key code and a modifier mask (the Shortcut encoding)
    // for id. 0 on success; otherwise a negative status and nothing is left grabbed for id.
    int grab(quint32 keyCode, quint32 modifiers, int id);
    void ungrab(int id);

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    // X modifier bits of the mask bits, from the server's current modifier mapping.
    struct ModifierBits {
        uint16_t super = XCB_MOD_MASK_4;
        uint16_t alt = XCB_MOD_MASK_1;
        uint16_t numLock = XCB_MOD_MASK_2;
    };
    ModifierBits modifierBits() const;

private:
    struct Grab {
        xcb_keycode_t keycode;
        uint16_t modifiers; // without the lock bits
    };

    QList<uint16_t> lockVariants(const ModifierBits& bits) const;

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    QHash<int, QList<Grab>> m_grabs;
    ModifierBits m_bits; // as they were when the last combination was grabbed
};
