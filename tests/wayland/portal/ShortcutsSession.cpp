#include "ShortcutsSession.h"

#include <algorithm>

using namespace Qt::StringLiterals;

ShortcutsSession::ShortcutsSession(const QDBusObjectPath& handle, const QString& appId, QObject* parent)
    : QObject(parent)
    , m_handle(handle)
    , m_appId(appId)
{
}

bool ShortcutsSession::hasBinding(const QString& id) const
{
    return std::ranges::any_of(m_bindings, [&id](const Binding& binding) { return binding.id == id; });
}

bool ShortcutsSession::setTriggerDescription(const QString& id, const QString& triggerDescription)
{
    const auto binding
        = std::ranges::find_if(m_bindings, [&id](const Binding& candidate) { return candidate.id == id; });
    if (binding == m_bindings.end())
        return false;
    binding->triggerDescription = triggerDescription;
    return true;
}

PortalShortcuts ShortcutsSession::shortcuts() const
{
    PortalShortcuts shortcuts;
    for (const Binding& binding : m_bindings)
        shortcuts.append({ binding.id,
            { { u"description"_s, binding.description },
                { u"trigger_description"_s, binding.triggerDescription } } });
    return shortcuts;
}

void ShortcutsSession::Close()
{
    Q_EMIT closedByFrontend();
}
