#pragma once

#include "DesktopProbe.h"

#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QStringList>
#include <functional>

// The running program's tray tooltip, read off the screen: the pointer rests on the tray icon,
// the tooltip that comes up is grabbed and compared pixel for pixel with tooltips of known texts
// drawn by Qt in this process. A tooltip shows the text of the moment it was asked for, so the
// pointer nudges the icon by one pixel while a tooltip is up, which makes Qt ask again.
class VideoTrayToolTip {
public:
    // texts: every text the tooltip may show that should be recognised.
    VideoTrayToolTip(DesktopProbe& probe, qint64 pid, xcb_window_t icon, const QStringList& texts);

    // Draws the known tooltips here; false when a text gave no tooltip.
    bool prepare();
    // Hovers the icon and reads the tooltip until `done` holds or the time is up; false then.
    bool watchUntil(const std::function<bool()>& done, int timeoutMs);
    // Waits until the tooltip reads `text`.
    bool waitFor(const QString& text, int timeoutMs);

    // The texts recognised so far, in order, each repeat of the same text left out.
    const QStringList& seen() const { return m_seen; }
    QString last() const { return m_seen.isEmpty() ? QString() : m_seen.last(); }
    // The texts seen with the time each was first read, in milliseconds since prepare(): for messages.
    QString timeline() const;
    // How many tooltips were on screen that matched no known text (e.g. caught while redrawing).
    int unrecognised() const { return m_unrecognised; }
    // The last of those, to look at when a test fails.
    const QImage& lastUnrecognised() const { return m_lastUnrecognised; }

private:
    void sample();
    void nudge();

    DesktopProbe& m_probe;
    qint64 m_pid;
    QRect m_icon;
    QStringList m_texts;
    QHash<QString, QImage> m_drawn;
    QStringList m_seen;
    QList<qint64> m_seenAt;
    QElapsedTimer m_clock;
    int m_unrecognised = 0;
    QImage m_lastUnrecognised;
    bool m_left = true;
    bool m_nudgedSinceHidden = false;
    QElapsedTimer m_sinceNudge;
};
