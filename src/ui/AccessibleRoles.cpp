#include "AccessibleRoles.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QWidget>

namespace AccessibleRoles {

namespace {

QHash<QString, QAccessible::Role>& assignedRoles()
{
    static QHash<QString, QAccessible::Role> roles;
    return roles;
}

// Qt asks with the object's class name first and then with each base class name in turn, and
// asks every factory for one name before it goes on to the next: a class of Qt's own that has an
// interface (QDialog, QMenu, QLabel, ...) gets it before the plain "QWidget" is reached.
QAccessibleInterface* interfaceFor(const QString& className, QObject* object)
{
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget)
        return nullptr;
    const QHash<QString, QAccessible::Role>& roles = assignedRoles();
    if (const auto assigned = roles.constFind(className);
        assigned != roles.cend() && className == QLatin1StringView(object->metaObject()->className()))
        return new QAccessibleWidget(widget, *assigned);
    if (className == QLatin1StringView("QWidget") && widget->isWindow())
        return new QAccessibleWidget(widget, QAccessible::Window);
    return nullptr;
}

} // namespace

void install()
{
    static const bool installed = [] {
        QAccessible::installFactory(&interfaceFor);
        return true;
    }();
    Q_UNUSED(installed);
}

void assign(const QMetaObject& widgetClass, QAccessible::Role role)
{
    assignedRoles().insert(QString::fromLatin1(widgetClass.className()), role);
    install();
}

} // namespace AccessibleRoles
