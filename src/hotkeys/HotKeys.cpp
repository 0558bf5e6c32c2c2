#include "HotKeys.h"

#include "GlobalKeys.h"
#include "Preferences.h"

#include <QPointer>

using namespace Qt::StringLiterals;

HotKeys::HotKeys(GlobalKeys& keys, Preferences& preferences, QObject* parent)
    : QObject(parent)
    , m_keys(keys)
    , m_preferences(preferences)
{
    m_keys.onPressed = [self = QPointer(this)](int id) {
        if (self)
            self->pressed(id);
    };
}

HotKeys::~HotKeys()
{
    suspend();
    m_keys.onPressed = nullptr;
}

int HotKeys::registerShortcut(const Shortcut& shortcut, CaptureMode mode)
{
    const int id = static_cast<int>(CaptureModes::rawValue(mode));
    if (m_references.remove(mode))
        m_keys.ungrab(id);
    const int status = m_keys.grab(shortcut.keyCode, shortcut.modifiers, id);
    if (status == 0)
        m_references.insert(mode);
    return status;
}

void HotKeys::suspend()
{
    for (CaptureMode mode : std::as_const(m_references))
        m_keys.ungrab(static_cast<int>(CaptureModes::rawValue(mode)));
    m_references.clear();
}

QStringList HotKeys::resume()
{
    QStringList failures;
    for (CaptureMode mode : CaptureModes::allCases) {
        const Shortcut shortcut = m_preferences.shortcut(mode);
        if (registerShortcut(shortcut, mode) != 0)
            failures.append(CaptureModes::title(mode) + u": "_s + shortcut.display());
    }
    return failures;
}

void HotKeys::pressed(int id)
{
    const std::optional<CaptureMode> mode
        = id > 0 ? CaptureModes::fromRawValue(static_cast<quint32>(id)) : std::nullopt;
    if (!mode || !m_references.contains(*mode))
        return; // a press that matches no registration does nothing
    // The capture starts after the platform's event has been handled.
    QMetaObject::invokeMethod(
        this,
        [this, captured = *mode] {
            if (onCapture)
                onCapture(captured);
        },
        Qt::QueuedConnection);
}
