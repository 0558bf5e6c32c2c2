#include "HotKeys.h"

#include "AppCommand.h"
#include "Preferences.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

int idOf(CaptureMode mode)
{
    return static_cast<int>(CaptureModes::rawValue(mode));
}

std::optional<CaptureMode> modeOf(int id)
{
    return id > 0 ? CaptureModes::fromRawValue(static_cast<quint32>(id)) : std::nullopt;
}

} // namespace

HotKeys::HotKeys(GlobalKeys& keys, Preferences& preferences, QObject* parent)
    : QObject(parent)
    , m_keys(keys)
    , m_preferences(preferences)
{
    m_keys.onPressed = [self = QPointer(this)](int id) {
        if (self)
            self->pressed(id);
    };
    m_keys.onBound = [self = QPointer(this)](const QList<GlobalKeys::Binding>& bindings) {
        if (self)
            self->bound(bindings);
    };
}

HotKeys::~HotKeys()
{
    suspend();
    m_keys.onPressed = nullptr;
    m_keys.onBound = nullptr;
}

GlobalKeys::Request HotKeys::request(const Shortcut& shortcut, CaptureMode mode) const
{
    return { idOf(mode), AppCommand::modeName(mode), shortcut.keyCode, shortcut.modifiers,
        CaptureModes::title(mode) };
}

void HotKeys::ask(const QList<GlobalKeys::Request>& requests)
{
    for (const GlobalKeys::Request& request : requests) {
        const CaptureMode mode = *modeOf(request.id);
        if (m_references.remove(mode))
            m_keys.release(request.id);
        m_status.remove(mode);
        m_pending.insert(mode);
    }
    m_asking = true;
    m_keys.bind(requests);
    m_asking = false;
}

int HotKeys::registerShortcut(const Shortcut& shortcut, CaptureMode mode)
{
    ask({ request(shortcut, mode) });
    return m_pending.contains(mode) ? pending : m_status.value(mode);
}

void HotKeys::suspend()
{
    for (CaptureMode mode : std::as_const(m_references))
        m_keys.release(idOf(mode));
    m_references.clear();
}

QStringList HotKeys::resume()
{
    QList<GlobalKeys::Request> requests;
    for (CaptureMode mode : CaptureModes::allCases)
        requests.append(request(m_preferences.shortcut(mode), mode));
    ask(requests);

    QStringList failures;
    for (CaptureMode mode : CaptureModes::allCases) {
        if (!m_pending.contains(mode) && m_status.value(mode) != 0)
            failures.append(CaptureModes::title(mode) + u": "_s + m_preferences.shortcut(mode).display());
    }
    return failures;
}

void HotKeys::bound(const QList<GlobalKeys::Binding>& bindings)
{
    for (const GlobalKeys::Binding& binding : bindings) {
        const std::optional<CaptureMode> mode = modeOf(binding.id);
        if (!mode)
            continue;
        m_pending.remove(*mode);
        m_status.insert(*mode, binding.status);
        m_triggers.insert(*mode, binding.trigger);
        if (binding.status == 0)
            m_references.insert(*mode);
        else
            m_references.remove(*mode);
    }
    // An answer inside the request is the request's own result; a later one is news.
    if (!m_asking && onChanged)
        onChanged();
}

QString HotKeys::label(CaptureMode mode) const
{
    switch (m_keys.binder()) {
    case ShortcutBinder::program:
        return m_preferences.shortcut(mode).display();
    case ShortcutBinder::desktop:
        return m_references.contains(mode) ? m_triggers.value(mode) : QString();
    case ShortcutBinder::user:
        break;
    }
    return QString();
}

void HotKeys::pressed(int id)
{
    const std::optional<CaptureMode> mode = modeOf(id);
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
