#include "X11ScreenGrab.h"

#include "X11SharedMemory.h"

#include <QSysInfo>
#include <xcb/shm.h>

using namespace Qt::StringLiterals;

namespace {

// QImage takes the reply of a plain GetImage request over and frees it with the image.
void freeReply(void* reply)
{
    std::free(reply);
}

constexpr uint8_t hostByteOrder
    = QSysInfo::ByteOrder == QSysInfo::LittleEndian ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;

} // namespace

X11ScreenGrab::X11ScreenGrab(X11Connection& connection)
    : m_connection(connection)
{
    if (!m_connection.isOpen() || !m_connection.screen()) {
        m_reason = u"X sunucusuna bağlantı yok."_s;
        return;
    }
    const xcb_setup_t* setup = xcb_get_setup(m_connection.get());
    const xcb_screen_t* screen = m_connection.screen();
    int bitsPerPixel = 0;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0; xcb_format_next(&it)) {
        if (it.data->depth == screen->root_depth)
            bitsPerPixel = it.data->bits_per_pixel;
    }
    const xcb_visualtype_t* visual = nullptr;
    for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem > 0 && !visual;
         xcb_depth_next(&depths)) {
        for (auto it = xcb_depth_visuals_iterator(depths.data); it.rem > 0; xcb_visualtype_next(&it)) {
            if (it.data->visual_id == screen->root_visual) {
                visual = it.data;
                break;
            }
        }
    }
    m_supported = (screen->root_depth == 24 || screen->root_depth == 32) && bitsPerPixel == 32
        && setup->image_byte_order == hostByteOrder && visual && visual->red_mask == 0xff0000
        && visual->green_mask == 0x00ff00 && visual->blue_mask == 0x0000ff;
    if (!m_supported) {
        m_reason = u"Ekranın piksel biçimi desteklenmiyor (derinlik %1, piksel başına %2 bit)."_s
                       .arg(screen->root_depth)
                       .arg(bitsPerPixel);
        return;
    }
    m_sharedMemory = X11SharedMemory::isOffered(m_connection);
}

QRect X11ScreenGrab::rootRect() const
{
    const xcb_screen_t* screen = m_connection.screen();
    return screen ? QRect(0, 0, screen->width_in_pixels, screen->height_in_pixels) : QRect();
}

QImage X11ScreenGrab::grab(const QRect& wanted)
{
    const QRect rect = wanted & rootRect();
    if (!m_supported || rect.isEmpty())
        return {};
    if (m_sharedMemory) {
        QImage image = grabShared(rect);
        if (!image.isNull())
            return image;
        // A server that offers the extension may still refuse our memory (a remote server does).
        m_sharedMemory = false;
    }
    return grabPlain(rect);
}

QImage X11ScreenGrab::grabShared(const QRect& rect)
{
    const qsizetype bytesPerLine = qsizetype(rect.width()) * 4;
    X11SharedMemory memory(m_connection, static_cast<std::size_t>(bytesPerLine * rect.height()));
    if (!memory.isValid())
        return {};
    const auto cookie = xcb_shm_get_image(m_connection.get(), m_connection.root(),
        static_cast<int16_t>(rect.x()), static_cast<int16_t>(rect.y()), static_cast<uint16_t>(rect.width()),
        static_cast<uint16_t>(rect.height()), ~0u, XCB_IMAGE_FORMAT_Z_PIXMAP, memory.segment(), 0);
    XcbReply<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(m_connection.get(), cookie, nullptr));
    if (!reply || reply->size != static_cast<uint32_t>(bytesPerLine * rect.height()))
        return {};
    void* pixels = memory.release();
    return QImage(static_cast<uchar*>(pixels), rect.width(), rect.height(), bytesPerLine,
        QImage::Format_RGB32, &X11SharedMemory::unmap, pixels);
}

QImage X11ScreenGrab::grabPlain(const QRect& rect)
{
    const auto cookie = xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection.root(),
        static_cast<int16_t>(rect.x()), static_cast<int16_t>(rect.y()), static_cast<uint16_t>(rect.width()),
        static_cast<uint16_t>(rect.height()), ~0u);
    XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
    const qsizetype bytesPerLine = qsizetype(rect.width()) * 4;
    if (!reply || xcb_get_image_data_length(reply.get()) != bytesPerLine * rect.height())
        return {};
    uchar* pixels = xcb_get_image_data(reply.get());
    void* owner = reply.release();
    return QImage(pixels, rect.width(), rect.height(), bytesPerLine, QImage::Format_RGB32, &freeReply, owner);
}
