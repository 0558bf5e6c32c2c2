#include "X11VideoSources.h"

#include "X11Outputs.h"
#include "X11Windows.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace {

Error noDesktop()
{
    return Error(u"Vexet"_s, 1, u"X sunucusuna bağlanılamadı."_s);
}

} // namespace

X11VideoSources::X11VideoSources() = default;

Result<QList<VideoDisplay>> X11VideoSources::displays()
{
    if (!m_connection.isOpen())
        return noDesktop();
    X11Outputs outputs(m_connection);
    const QList<X11Outputs::Output> all = outputs.list();
    QList<VideoDisplay> result;
    // In the order of Qt's screens, each matched to the output that shows the same area.
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        const QRect pixels(
            screen->geometry().topLeft(), screen->geometry().size() * screen->devicePixelRatio());
        for (const X11Outputs::Output& output : all) {
            if (output.geometry.topLeft() != pixels.topLeft())
                continue;
            const QString name = !screen->model().isEmpty() ? screen->model() : output.name;
            result.append(VideoDisplay { output.id, name, output.geometry, screen->devicePixelRatio() });
            break;
        }
    }
    return result;
}

Result<QList<VideoWindow>> X11VideoSources::windows()
{
    if (!m_connection.isOpen())
        return noDesktop();
    X11Windows windows(m_connection);
    const xcb_atom_t normal = m_connection.atom("_NET_WM_WINDOW_TYPE_NORMAL");
    const xcb_atom_t hidden = m_connection.atom("_NET_WM_STATE_HIDDEN");
    QList<xcb_window_t> stacking = windows.clientsStacking();
    std::reverse(stacking.begin(), stacking.end()); // front to back
    QList<VideoWindow> result;
    for (xcb_window_t window : std::as_const(stacking)) {
        const QList<xcb_atom_t> types = windows.atoms(window, "_NET_WM_WINDOW_TYPE");
        if ((!types.isEmpty() && !types.contains(normal))
            || windows.atoms(window, "_NET_WM_STATE").contains(hidden) || !windows.isViewable(window))
            continue;
        const std::optional<QRect> geometry = windows.rootGeometry(window);
        if (!geometry)
            continue;
        const QStringList wmClass = windows.wmClass(window);
        result.append(VideoWindow { static_cast<quint32>(window), wmClass.value(1), windows.title(window),
            *geometry, windows.pid(window).value_or(0) });
    }
    return result;
}

void X11VideoSources::choose(bool, bool, std::function<void(const Result<VideoTarget>&)> done)
{
    done(videoError(u"Bu masaüstünde kaynak listeden seçilir."_s));
}

void X11VideoSources::screenPicture(QScreen* screen, std::function<void(const QImage&)> done)
{
    done(screen->grabWindow(0).toImage());
}
