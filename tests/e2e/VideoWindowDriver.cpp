#include "VideoWindowDriver.h"

#include "FileReveal.h"
#include "VideoController.h"
#include "VideoKeyboard.h"
#include "VideoRecorder.h"
#include "X11RecordingDesktop.h"
#include "X11VideoSources.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

namespace {

class NoReveal : public FileReveal {
public:
    void reveal(const QString&) override { }
};

QRect inWindow(const QWidget* widget, const QWidget* window)
{
    return QRect(widget->mapTo(window, QPoint(0, 0)), widget->size());
}

} // namespace

QList<quint32> VideoWindowDriver::videoKeys()
{
    return { XK_Alt_L, XK_Shift_L, XK_Super_L, XK_g };
}

QList<quint32> VideoWindowDriver::screenKeys()
{
    return { XK_Alt_L, XK_Shift_L, XK_Super_L, XK_5 };
}

VideoWindowDriver::VideoWindowDriver(DesktopProbe& probe)
    : m_probe(probe)
{
}

bool VideoWindowDriver::fail(const QString& why)
{
    m_why = why;
    return false;
}

bool VideoWindowDriver::learnLayout(const QString& settingsFile)
{
    X11RecordingDesktop desktop;
    X11VideoSources sources;
    NoReveal reveal;
    QSettings settings(settingsFile, QSettings::IniFormat);
    VideoController layout(std::make_unique<VideoRecorder>(desktop), sources, reveal, settings);
    layout.present();
    if (!QTest::qWaitForWindowExposed(&layout))
        return fail(u"the recording window laid out here did not show"_s);
    if (!QTest::qWaitFor([&] { return !layout.loading() && layout.source()->count() > 0; }, 10000))
        return fail(u"the recording window laid out here listed no sources"_s);
    m_kind = inWindow(layout.kind(), &layout);
    m_source = inWindow(layout.source(), &layout);
    m_start = inWindow(layout.startButton(), &layout);
    m_info = inWindow(layout.info(), &layout);
    m_infoLoaded = layout.info()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    layout.hide();
    return true;
}

std::optional<xcb_window_t> VideoWindowDriver::window()
{
    const QList<xcb_window_t> windows = m_probe.windowsTitled(m_pid, windowTitle);
    return windows.size() == 1 ? std::optional(windows.first()) : std::nullopt;
}

bool VideoWindowDriver::isShown()
{
    return window().has_value();
}

bool VideoWindowDriver::open()
{
    if (!m_probe.input().typeCombination(videoKeys()))
        return fail(u"the video shortcut has no keys"_s);
    if (!m_probe.waitForWindowsTitled(m_pid, windowTitle, 1))
        return fail(u"the shortcut opened no recording window"_s);
    // The instruction line changes once the displays and windows are listed.
    QImage shown;
    const bool loaded = QTest::qWaitFor(
        [&] {
            const std::optional<xcb_window_t> current = window();
            const std::optional<QRect> rect
                = current ? m_probe.windows().rootGeometry(*current) : std::nullopt;
            shown = rect ? m_probe.windows().grab(m_info.translated(rect->topLeft())) : QImage();
            return shown == m_infoLoaded;
        },
        20000);
    return loaded || fail(u"the recording window never showed its sources as listed"_s);
}

bool VideoWindowDriver::click(const QRect& rect)
{
    const std::optional<xcb_window_t> current = window();
    const std::optional<QRect> frame = current ? m_probe.windows().rootGeometry(*current) : std::nullopt;
    if (!frame)
        return fail(u"the recording window is not on screen"_s);
    m_probe.input().click(frame->topLeft() + rect.center());
    return true;
}

bool VideoWindowDriver::choose(Control control, int downs)
{
    if (!click(control == Control::kind ? m_kind : m_source))
        return false;
    if (!QTest::qWaitFor([&] { return !m_probe.popupMenus(m_pid).isEmpty(); }, 10000))
        return fail(u"the combo box opened no list"_s);
    for (int i = 0; i < downs; ++i)
        m_probe.input().typeCombination({ XK_Down });
    m_probe.input().typeCombination({ XK_Return });
    return QTest::qWaitFor([&] { return m_probe.popupMenus(m_pid).isEmpty(); }, 10000)
        || fail(u"the combo box list did not close"_s);
}

bool VideoWindowDriver::pressStart()
{
    return click(m_start);
}

bool VideoWindowDriver::waitForFocus(xcb_window_t window)
{
    X11Connection connection;
    const auto focused = [&] {
        XcbReply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
        return reply && reply->focus == window;
    };
    if (QTest::qWaitFor(focused, 5000))
        return true;
    m_probe.focus(window);
    return QTest::qWaitFor(focused, 5000);
}

bool VideoWindowDriver::typeIntoSaveDialog(const QString& path)
{
    if (!m_probe.waitForWindowsTitled(m_pid, saveTitle, 1))
        return fail(u"no save dialog came up"_s);
    const xcb_window_t dialog = m_probe.windowsTitled(m_pid, saveTitle).first();
    if (!waitForFocus(dialog))
        return fail(u"the save dialog never had the keyboard"_s);
    // The file name field has the keyboard: select the proposed name and type over it.
    m_probe.input().typeCombination({ XK_Control_L, XK_a });
    if (!VideoKeyboard::typeText(m_probe.input(), path))
        return fail(u"the path cannot be typed: "_s + path);
    // Completions of the folder part come and go while typing; none is left for a new file.
    return QTest::qWaitFor([&] { return m_probe.popupMenus(m_pid).isEmpty(); }, 10000)
        || fail(u"the file name field kept a completion list open"_s);
}

bool VideoWindowDriver::confirmSaveDialog()
{
    m_probe.input().typeCombination({ XK_Return });
    return m_probe.waitForWindowsTitled(m_pid, saveTitle, 0) || fail(u"the save dialog did not close"_s);
}

QString VideoWindowDriver::readAndCloseAlert(int timeoutMs)
{
    if (!m_probe.waitForWindowsTitled(m_pid, u"Vexet"_s, 1, timeoutMs)) {
        fail(u"no alert came up"_s);
        return {};
    }
    const xcb_window_t alert = m_probe.windowsTitled(m_pid, u"Vexet"_s).first();
    QGuiApplication::clipboard()->clear();
    if (!waitForFocus(alert)) {
        fail(u"the alert never had the keyboard"_s);
        return {};
    }
    m_probe.input().typeCombination({ XK_Control_L, XK_c });
    QString text;
    const bool copied = QTest::qWaitFor(
        [&text] { return !(text = QGuiApplication::clipboard()->text()).isEmpty(); }, 10000);
    m_probe.input().typeCombination({ XK_Return });
    const bool closed = m_probe.waitForWindowsTitled(m_pid, u"Vexet"_s, 0);
    if (!copied || !closed) {
        fail(copied ? u"the alert did not close"_s : u"Ctrl+C copied nothing from the alert"_s);
        return {};
    }
    return text;
}
