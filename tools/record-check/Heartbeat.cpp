#include "Heartbeat.h"

Heartbeat::Heartbeat(const QElapsedTimer& clock)
    : m_clock(clock)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(10);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
    m_lastBeat = m_clock.elapsed();
    m_timer.start();
}

void Heartbeat::enter(const QString& phase)
{
    if (m_gaps.isEmpty() || m_gaps.last().phase != phase)
        m_gaps.append(Gap { phase, 0, 0 });
}

void Heartbeat::beat()
{
    const qint64 now = m_clock.elapsed();
    const qint64 gap = now - m_lastBeat;
    m_lastBeat = now;
    if (!m_gaps.isEmpty() && gap > m_gaps.last().longestMs) {
        m_gaps.last().longestMs = gap;
        m_gaps.last().atMs = now;
    }
}
