#include "RegionSelectionAccessible.h"

#include "RegionSelectionWindow.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

RegionSelectionAccessible::RegionSelectionAccessible(RegionSelectionWindow* window)
    : m_window(window)
{
}

void RegionSelectionAccessible::install()
{
    static const bool installed = [] {
        QAccessible::installFactory([](const QString& className, QObject* object) -> QAccessibleInterface* {
            if (className != QLatin1StringView(RegionSelectionWindow::staticMetaObject.className()))
                return nullptr;
            return new RegionSelectionAccessible(static_cast<RegionSelectionWindow*>(object));
        });
        return true;
    }();
    Q_UNUSED(installed);
}

bool RegionSelectionAccessible::isValid() const
{
    return m_window;
}

QObject* RegionSelectionAccessible::object() const
{
    return m_window;
}

QWindow* RegionSelectionAccessible::window() const
{
    return m_window;
}

QAccessibleInterface* RegionSelectionAccessible::parent() const
{
    return QAccessible::queryAccessibleInterface(qApp);
}

QAccessibleInterface* RegionSelectionAccessible::child(int) const
{
    return nullptr;
}

int RegionSelectionAccessible::childCount() const
{
    return 0;
}

int RegionSelectionAccessible::indexOfChild(const QAccessibleInterface*) const
{
    return -1;
}

QAccessibleInterface* RegionSelectionAccessible::childAt(int, int) const
{
    return nullptr;
}

QString RegionSelectionAccessible::text(QAccessible::Text type) const
{
    if (!m_window)
        return {};
    switch (type) {
    case QAccessible::Name:
        return m_window->title().isEmpty() ? u"Vexet — Ekrandan seçim"_s : m_window->title();
    case QAccessible::Description: {
        QString result = m_window->look().hint.isEmpty()
            ? u"Donmuş ekran resmi: fareyle seç. Esc ya da sağ tık iptal eder."_s
            : m_window->look().hint;
        const QRect lit = m_window->lit();
        if (!lit.isEmpty())
            result += u" Seçili alan %1 × %2 piksel, sol üst köşesi %3, %4."_s.arg(lit.width())
                          .arg(lit.height())
                          .arg(lit.x())
                          .arg(lit.y());
        return result;
    }
    default:
        return {};
    }
}

void RegionSelectionAccessible::setText(QAccessible::Text, const QString&)
{
}

QRect RegionSelectionAccessible::rect() const
{
    return m_window ? m_window->geometry() : QRect();
}

QAccessible::Role RegionSelectionAccessible::role() const
{
    return QAccessible::Window;
}

QAccessible::State RegionSelectionAccessible::state() const
{
    QAccessible::State result;
    if (!m_window)
        return result;
    result.focusable = true;
    result.active = m_window->isActive();
    result.focused = m_window->isActive();
    result.invisible = !m_window->isVisible();
    return result;
}
