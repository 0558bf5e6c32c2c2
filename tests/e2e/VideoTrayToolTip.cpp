#include "VideoTrayToolTip.h"

#include <QApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QTest>
#include <QToolTip>

namespace {

constexpr int sampleMs = 40;
// While a tooltip is up Qt answers a move within a few milliseconds; the pointer moves this often.
constexpr int nudgeMs = 120;
// With no tooltip up Qt waits 700 ms after the last move; a move in between starts that wait
// again, so the pointer moves only this seldom then (input or focus changes in the program may
// have cancelled the wait).
constexpr int hiddenNudgeMs = 800;

QWidget* shownToolTip()
{
    const QList<QWidget*> windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->inherits("QTipLabel") && window->isVisible())
            return window;
    }
    return nullptr;
}

} // namespace

VideoTrayToolTip::VideoTrayToolTip(
    DesktopProbe& probe, qint64 pid, xcb_window_t icon, const QStringList& texts)
    : m_probe(probe)
    , m_pid(pid)
    , m_icon(probe.windows().rootGeometry(icon).value_or(QRect()))
    , m_texts(texts)
{
}

bool VideoTrayToolTip::prepare()
{
    // Near the tray, on the same monitor, as the program's own tooltip will be.
    const QPoint where = m_icon.isValid() ? m_icon.bottomLeft() - QPoint(300, 0) : QPoint(100, 100);
    for (const QString& text : std::as_const(m_texts)) {
        QToolTip::showText(where, text);
        QWidget* tip = nullptr;
        if (!QTest::qWaitFor([&] { return (tip = shownToolTip()) != nullptr; }, 5000))
            return false;
        if (!QTest::qWaitFor([&] { return tip->property("text").toString() == text; }, 5000))
            return false;
        m_drawn.insert(text, tip->grab().toImage().convertToFormat(QImage::Format_RGB32));
    }
    QToolTip::hideText();
    m_clock.start();
    return m_icon.isValid();
}

QString VideoTrayToolTip::timeline() const
{
    QStringList entries;
    for (qsizetype i = 0; i < m_seen.size(); ++i)
        entries.append(m_seen.at(i) + QStringLiteral(" @") + QString::number(m_seenAt.at(i)));
    return entries.join(QStringLiteral(", "));
}

void VideoTrayToolTip::nudge()
{
    m_left = !m_left;
    m_probe.input().movePointer(m_icon.center() + QPoint(m_left ? 0 : 1, 0));
    m_sinceNudge.start();
}

void VideoTrayToolTip::sample()
{
    const QList<xcb_window_t> tips = m_probe.toolTips(m_pid);
    if (tips.isEmpty()) {
        // Qt shows a tooltip once the pointer has rested on the icon for a while after a move.
        if (!m_nudgedSinceHidden || m_sinceNudge.elapsed() >= hiddenNudgeMs) {
            nudge();
            m_nudgedSinceHidden = true;
        }
        return;
    }
    m_nudgedSinceHidden = false;
    const std::optional<QRect> rect = m_probe.windows().rootGeometry(tips.first());
    const QImage shown
        = rect ? m_probe.windows().grab(*rect).convertToFormat(QImage::Format_RGB32) : QImage();
    bool known = false;
    for (auto it = m_drawn.cbegin(); it != m_drawn.cend(); ++it) {
        if (it.value() == shown) {
            known = true;
            if (last() != it.key()) {
                m_seen.append(it.key());
                m_seenAt.append(m_clock.elapsed());
            }
            break;
        }
    }
    if (!known && !shown.isNull()) {
        ++m_unrecognised;
        m_lastUnrecognised = shown;
    }
    if (!m_sinceNudge.isValid() || m_sinceNudge.elapsed() >= nudgeMs)
        nudge();
}

bool VideoTrayToolTip::watchUntil(const std::function<bool()>& done, int timeoutMs)
{
    if (!m_icon.isValid())
        return false;
    if (!m_icon.contains(m_probe.input().pointer()))
        nudge();
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        sample();
        QTest::qWait(sampleMs);
    }
    return true;
}

bool VideoTrayToolTip::waitFor(const QString& text, int timeoutMs)
{
    return watchUntil([&] { return last() == text; }, timeoutMs);
}
