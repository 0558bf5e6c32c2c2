#include "DesktopProbe.h"

#include <QTest>

using namespace Qt::StringLiterals;

DesktopProbe::DesktopProbe()
    : m_windows(m_connection)
    , m_input(m_connection)
{
}

std::optional<xcb_window_t> DesktopProbe::trayIcon(qint64 pid)
{
    const QList<xcb_window_t> all = m_windows.allWindows();
    for (xcb_window_t window : all) {
        if (m_windows.pid(window) == static_cast<quint32>(pid) && insideTray(window)
            && m_windows.isViewable(window))
            return window;
    }
    return std::nullopt;
}

QList<xcb_window_t> DesktopProbe::mappedClientWindows(qint64 pid)
{
    QList<xcb_window_t> result;
    const QList<xcb_window_t> clients = m_windows.clientsStacking();
    for (xcb_window_t window : clients) {
        if (m_windows.pid(window) == static_cast<quint32>(pid) && m_windows.isViewable(window))
            result.append(window);
    }
    return result;
}

QList<xcb_window_t> DesktopProbe::popupMenus(qint64 pid)
{
    QList<xcb_window_t> result;
    const xcb_atom_t toolTipType = m_connection.atom("_NET_WM_WINDOW_TYPE_TOOLTIP");
    const QList<xcb_window_t> topLevels = m_windows.children(m_connection.root());
    for (xcb_window_t window : topLevels) {
        if (m_windows.pid(window) == static_cast<quint32>(pid) && m_windows.isViewable(window)
            && m_windows.isOverrideRedirect(window)
            && !m_windows.atoms(window, "_NET_WM_WINDOW_TYPE").contains(toolTipType)
            && m_windows.rootGeometry(window).value_or(QRect()).width() > 50)
            result.append(window);
    }
    return result;
}

QList<xcb_window_t> DesktopProbe::windowsTitled(qint64 pid, const QString& title)
{
    QList<xcb_window_t> result;
    const QList<xcb_window_t> windows = mappedClientWindows(pid);
    for (xcb_window_t window : windows) {
        if (m_windows.title(window) == title)
            result.append(window);
    }
    return result;
}

bool DesktopProbe::waitForWindowsTitled(qint64 pid, const QString& title, qsizetype count, int timeoutMs)
{
    return QTest::qWaitFor([&] { return windowsTitled(pid, title).size() == count; }, timeoutMs);
}

QList<xcb_window_t> DesktopProbe::programWindows(const QString& program)
{
    QList<xcb_window_t> result;
    const QList<xcb_window_t> topLevels = m_windows.children(m_connection.root());
    for (xcb_window_t window : topLevels) {
        if (m_windows.isViewable(window) && m_windows.wmClass(window).contains(program))
            result.append(window);
    }
    return result;
}

void DesktopProbe::focus(xcb_window_t window)
{
    xcb_set_input_focus(m_connection.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    m_connection.flush();
}

void DesktopProbe::requestClose(xcb_window_t window)
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = m_connection.atom("WM_PROTOCOLS");
    message.data.data32[0] = m_connection.atom("WM_DELETE_WINDOW");
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(
        m_connection.get(), 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&message));
    m_connection.flush();
}

QImage DesktopProbe::stableGrab(xcb_window_t window)
{
    QImage previous;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::optional<QRect> rect = m_windows.rootGeometry(window);
        if (!rect)
            return {};
        const QImage current = m_windows.grab(*rect);
        if (!current.isNull() && current == previous)
            return current;
        previous = current;
        QTest::qWait(100);
    }
    return {};
}

bool DesktopProbe::insideTray(xcb_window_t window)
{
    for (std::optional<xcb_window_t> ancestor = m_windows.parent(window);
         ancestor && *ancestor != m_connection.root() && *ancestor != XCB_NONE;
         ancestor = m_windows.parent(*ancestor)) {
        if (m_windows.wmClass(*ancestor).contains(u"trayer"_s, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QList<xcb_window_t> DesktopProbe::toolTips(qint64 pid)
{
    QList<xcb_window_t> result;
    const xcb_atom_t toolTipType = m_connection.atom("_NET_WM_WINDOW_TYPE_TOOLTIP");
    const QList<xcb_window_t> topLevels = m_windows.children(m_connection.root());
    for (xcb_window_t window : topLevels) {
        if (m_windows.pid(window) == static_cast<quint32>(pid) && m_windows.isViewable(window)
            && m_windows.atoms(window, "_NET_WM_WINDOW_TYPE").contains(toolTipType))
            result.append(window);
    }
    return result;
}
