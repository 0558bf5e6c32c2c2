#include "ShortcutsControl.h"

#include "ShortcutsBackend.h"

#include <QJsonDocument>

ShortcutsControl::ShortcutsControl(ShortcutsBackend& backend, QObject* parent)
    : QObject(parent)
    , m_backend(backend)
{
}

bool ShortcutsControl::Activate(const QString& id)
{
    return m_backend.activate(id);
}

bool ShortcutsControl::SetTrigger(const QString& id, const QString& triggerDescription)
{
    return m_backend.setTrigger(id, triggerDescription);
}

QString ShortcutsControl::Received() const
{
    return QString::fromUtf8(QJsonDocument(m_backend.received()).toJson(QJsonDocument::Compact));
}
