#include "X11Monitors.h"

#include <xcb/randr.h>

namespace {

// Puts the primary monitor first and keeps the order of the others.
QList<X11Monitors::Monitor> primaryFirst(QList<X11Monitors::Monitor> monitors)
{
    for (qsizetype i = 1; i < monitors.size(); ++i) {
        if (monitors.at(i).primary) {
            monitors.move(i, 0);
            break;
        }
    }
    return monitors;
}

} // namespace

X11Monitors::X11Monitors(X11Connection& connection)
    : m_connection(connection)
{
    if (!m_connection.isOpen())
        return;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(m_connection.get(), &xcb_randr_id);
    if (!extension || !extension->present)
        return;
    XcbReply<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
        m_connection.get(), xcb_randr_query_version(m_connection.get(), 1, 5), nullptr));
    if (version && version->major_version == 1)
        m_randrMinor = static_cast<int>(version->minor_version);
    else if (version && version->major_version > 1)
        m_randrMinor = 99;
}

QList<X11Monitors::Monitor> X11Monitors::list() const
{
    if (!m_connection.isOpen() || !m_connection.screen())
        return {};
    QList<Monitor> result;
    if (m_randrMinor >= 5)
        result = fromMonitors();
    else if (m_randrMinor >= 2)
        result = fromOutputs();
    if (result.isEmpty()) {
        const xcb_screen_t* screen = m_connection.screen();
        result.append({ QString(), QRect(0, 0, screen->width_in_pixels, screen->height_in_pixels), true });
    }
    return result;
}

QList<X11Monitors::Monitor> X11Monitors::fromMonitors() const
{
    QList<Monitor> result;
    XcbReply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
        m_connection.get(), xcb_randr_get_monitors(m_connection.get(), m_connection.root(), 1), nullptr));
    if (!reply)
        return result;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
        const xcb_randr_monitor_info_t* info = it.data;
        result.append(
            { atomName(info->name), QRect(info->x, info->y, info->width, info->height), info->primary != 0 });
    }
    return primaryFirst(result);
}

QList<X11Monitors::Monitor> X11Monitors::fromOutputs() const
{
    QList<Monitor> result;
    xcb_connection_t* c = m_connection.get();
    XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            c, xcb_randr_get_screen_resources_current(c, m_connection.root()), nullptr));
    if (!resources)
        return result;
    XcbReply<xcb_randr_get_output_primary_reply_t> primary(
        xcb_randr_get_output_primary_reply(c, xcb_randr_get_output_primary(c, m_connection.root()), nullptr));
    const xcb_randr_output_t* outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    const int count = xcb_randr_get_screen_resources_current_outputs_length(resources.get());
    for (int i = 0; i < count; ++i) {
        XcbReply<xcb_randr_get_output_info_reply_t> output(xcb_randr_get_output_info_reply(
            c, xcb_randr_get_output_info(c, outputs[i], resources->config_timestamp), nullptr));
        if (!output || output->connection != XCB_RANDR_CONNECTION_CONNECTED || output->crtc == XCB_NONE)
            continue;
        XcbReply<xcb_randr_get_crtc_info_reply_t> crtc(xcb_randr_get_crtc_info_reply(
            c, xcb_randr_get_crtc_info(c, output->crtc, resources->config_timestamp), nullptr));
        if (!crtc)
            continue;
        const QString name
            = QString::fromUtf8(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(output.get())),
                xcb_randr_get_output_info_name_length(output.get()));
        result.append({ name, QRect(crtc->x, crtc->y, crtc->width, crtc->height),
            primary && primary->output == outputs[i] });
    }
    return primaryFirst(result);
}

QString X11Monitors::atomName(xcb_atom_t atom) const
{
    XcbReply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(m_connection.get(), xcb_get_atom_name(m_connection.get(), atom), nullptr));
    if (!reply)
        return {};
    return QString::fromUtf8(xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get()));
}
