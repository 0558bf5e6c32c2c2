#include "X11Outputs.h"

#include <xcb/randr.h>

namespace {

using Resources = XcbReply<xcb_randr_get_screen_resources_current_reply_t>;

Resources resources(X11Connection& connection)
{
    return Resources(xcb_randr_get_screen_resources_current_reply(connection.get(),
        xcb_randr_get_screen_resources_current(connection.get(), connection.root()), nullptr));
}

} // namespace

X11Outputs::X11Outputs(X11Connection& connection)
    : m_connection(connection)
{
    if (!m_connection.isOpen())
        return;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(m_connection.get(), &xcb_randr_id);
    if (!extension || !extension->present)
        return;
    XcbReply<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
        m_connection.get(), xcb_randr_query_version(m_connection.get(), 1, 5), nullptr));
    m_hasRandr = version && (version->major_version > 1 || version->minor_version >= 2);
}

std::optional<X11Outputs::Output> X11Outputs::find(quint32 outputId) const
{
    if (!m_hasRandr || outputId == 0)
        return std::nullopt;
    const Resources current = resources(m_connection);
    if (!current)
        return std::nullopt;
    return describe(outputId, current->config_timestamp);
}

QList<X11Outputs::Output> X11Outputs::list() const
{
    QList<Output> result;
    if (!m_hasRandr)
        return result;
    const Resources current = resources(m_connection);
    if (!current)
        return result;
    const xcb_randr_output_t* outputs = xcb_randr_get_screen_resources_current_outputs(current.get());
    const int count = xcb_randr_get_screen_resources_current_outputs_length(current.get());
    for (int i = 0; i < count; ++i) {
        if (const std::optional<Output> output = describe(outputs[i], current->config_timestamp))
            result.append(*output);
    }
    return result;
}

std::optional<X11Outputs::Output> X11Outputs::describe(quint32 outputId, quint32 configTimestamp) const
{
    xcb_connection_t* c = m_connection.get();
    // An id that is no longer an output is an X error, which xcb hands back as a missing reply.
    XcbReply<xcb_randr_get_output_info_reply_t> info(
        xcb_randr_get_output_info_reply(c, xcb_randr_get_output_info(c, outputId, configTimestamp), nullptr));
    if (!info || info->connection != XCB_RANDR_CONNECTION_CONNECTED || info->crtc == XCB_NONE)
        return std::nullopt;
    XcbReply<xcb_randr_get_crtc_info_reply_t> crtc(
        xcb_randr_get_crtc_info_reply(c, xcb_randr_get_crtc_info(c, info->crtc, configTimestamp), nullptr));
    if (!crtc || crtc->width == 0 || crtc->height == 0)
        return std::nullopt;
    const QString name
        = QString::fromUtf8(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info.get())),
            xcb_randr_get_output_info_name_length(info.get()));
    return Output { outputId, name, QRect(crtc->x, crtc->y, crtc->width, crtc->height) };
}
