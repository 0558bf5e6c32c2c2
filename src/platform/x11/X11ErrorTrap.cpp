#include "X11ErrorTrap.h"

#include <X11/Xlib.h>
#include <algorithm>
#include <mutex>
#include <vector>

// The process-wide state behind the traps. Xlib has one error handler per process.
struct X11ErrorTrapRegistry {
    std::mutex mutex;
    std::vector<X11ErrorTrap*> traps;
    XErrorHandler previous = nullptr;
    bool installed = false;

    static X11ErrorTrapRegistry& instance()
    {
        static X11ErrorTrapRegistry registry;
        return registry;
    }

    static int onError(Display* display, XErrorEvent* event)
    {
        X11ErrorTrapRegistry& registry = instance();
        std::unique_lock lock(registry.mutex);
        if (registry.traps.empty()) {
            const XErrorHandler previous = registry.previous;
            lock.unlock();
            return previous ? previous(display, event) : 0;
        }
        char text[256] = {};
        XGetErrorText(display, event->error_code, text, sizeof text);
        const QString description = QString::fromLocal8Bit(text);
        const bool aboutWindow = event->error_code == BadWindow || event->error_code == BadDrawable
            || event->error_code == BadMatch;
        for (X11ErrorTrap* trap : registry.traps) {
            const bool windowLost
                = trap->m_windowId != 0 && event->resourceid == trap->m_windowId && aboutWindow;
            if (trap->m_handler)
                trap->m_handler(windowLost, description);
        }
        return 0;
    }
};

X11ErrorTrap::X11ErrorTrap(unsigned long windowId, Handler handler)
    : m_windowId(windowId)
    , m_handler(std::move(handler))
{
    X11ErrorTrapRegistry& registry = X11ErrorTrapRegistry::instance();
    std::lock_guard lock(registry.mutex);
    if (!registry.installed) {
        registry.previous = XSetErrorHandler(&X11ErrorTrapRegistry::onError);
        registry.installed = true;
    }
    registry.traps.push_back(this);
}

X11ErrorTrap::~X11ErrorTrap()
{
    X11ErrorTrapRegistry& registry = X11ErrorTrapRegistry::instance();
    std::lock_guard lock(registry.mutex);
    registry.traps.erase(
        std::remove(registry.traps.begin(), registry.traps.end(), this), registry.traps.end());
}
