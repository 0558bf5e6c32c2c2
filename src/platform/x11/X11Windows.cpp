#include "X11Windows.h"

#include <cstring>

X11Windows::X11Windows(X11Connection& connection)
    : m_connection(connection)
{
}

QList<xcb_window_t> X11Windows::children(xcb_window_t window) const
{
    QList<xcb_window_t> result;
    XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection.get(), xcb_query_tree(m_connection.get(), window), nullptr));
    if (!tree)
        return result;
    const xcb_window_t* list = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    result.reserve(count);
    for (int i = 0; i < count; ++i)
        result.append(list[i]);
    return result;
}

QList<xcb_window_t> X11Windows::allWindows() const
{
    QList<xcb_window_t> result;
    QList<xcb_window_t> pending = children(m_connection.root());
    while (!pending.isEmpty()) {
        const xcb_window_t window = pending.takeFirst();
        result.append(window);
        pending = children(window) + pending;
    }
    return result;
}

QList<xcb_window_t> X11Windows::clientsStacking() const
{
    const QByteArray data
        = property(m_connection.root(), m_connection.atom("_NET_CLIENT_LIST_STACKING"), XCB_ATOM_WINDOW);
    QList<xcb_window_t> result(static_cast<qsizetype>(data.size() / sizeof(xcb_window_t)));
    if (!result.isEmpty())
        std::memcpy(
            result.data(), data.constData(), static_cast<size_t>(result.size()) * sizeof(xcb_window_t));
    return result;
}

std::optional<xcb_window_t> X11Windows::parent(xcb_window_t window) const
{
    XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection.get(), xcb_query_tree(m_connection.get(), window), nullptr));
    if (!tree)
        return std::nullopt;
    return tree->parent;
}

bool X11Windows::isViewable(xcb_window_t window) const
{
    XcbReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        m_connection.get(), xcb_get_window_attributes(m_connection.get(), window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool X11Windows::isOverrideRedirect(xcb_window_t window) const
{
    XcbReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        m_connection.get(), xcb_get_window_attributes(m_connection.get(), window), nullptr));
    return attributes && attributes->override_redirect;
}

std::optional<QRect> X11Windows::rootGeometry(xcb_window_t window) const
{
    XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr));
    if (!geometry)
        return std::nullopt;
    XcbReply<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(m_connection.get(),
        xcb_translate_coordinates(m_connection.get(), window, m_connection.root(), 0, 0), nullptr));
    if (!origin)
        return std::nullopt;
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
}

std::optional<quint32> X11Windows::pid(xcb_window_t window) const
{
    return cardinal(window, "_NET_WM_PID");
}

QString X11Windows::title(xcb_window_t window) const
{
    const QByteArray name
        = property(window, m_connection.atom("_NET_WM_NAME"), m_connection.atom("UTF8_STRING"));
    if (!name.isEmpty())
        return QString::fromUtf8(name);
    return QString::fromLatin1(property(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING));
}

QStringList X11Windows::wmClass(xcb_window_t window) const
{
    const QByteArray data = property(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
    QStringList result;
    for (const QByteArray& part : data.split('\0')) {
        if (!part.isEmpty())
            result.append(QString::fromLatin1(part));
    }
    return result;
}

QList<xcb_atom_t> X11Windows::atoms(xcb_window_t window, const QByteArray& name) const
{
    const QByteArray data = property(window, m_connection.atom(name), XCB_ATOM_ATOM);
    QList<xcb_atom_t> result(static_cast<qsizetype>(data.size() / sizeof(xcb_atom_t)));
    if (!result.isEmpty())
        std::memcpy(result.data(), data.constData(), static_cast<size_t>(result.size()) * sizeof(xcb_atom_t));
    return result;
}

std::optional<quint32> X11Windows::cardinal(xcb_window_t window, const QByteArray& name) const
{
    const QByteArray data = property(window, m_connection.atom(name), XCB_ATOM_CARDINAL);
    if (data.size() < static_cast<qsizetype>(sizeof(quint32)))
        return std::nullopt;
    quint32 value = 0;
    std::memcpy(&value, data.constData(), sizeof value);
    return value;
}

QImage X11Windows::grab(const QRect& rect) const
{
    const auto cookie = xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection.root(),
        static_cast<int16_t>(rect.x()), static_cast<int16_t>(rect.y()), static_cast<uint16_t>(rect.width()),
        static_cast<uint16_t>(rect.height()), ~0u);
    XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
    if (!reply)
        return {};
    const int length = xcb_get_image_data_length(reply.get());
    if (reply->depth != 24 || length != rect.width() * rect.height() * 4)
        return {};
    QImage image(rect.size(), QImage::Format_RGB32);
    const uint8_t* data = xcb_get_image_data(reply.get());
    for (int y = 0; y < rect.height(); ++y)
        std::memcpy(image.scanLine(y), data + static_cast<size_t>(y) * rect.width() * 4,
            static_cast<size_t>(rect.width()) * 4);
    return image;
}

QByteArray X11Windows::property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const
{
    const auto cookie = xcb_get_property(m_connection.get(), 0, window, name, type, 0, 1 << 20);
    XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection.get(), cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE)
        return {};
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
        xcb_get_property_value_length(reply.get()));
}
