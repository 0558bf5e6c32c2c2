#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QString>
#include <QTimer>

// A timer that should fire every 10 ms on the main thread, and the longest gap between two of its
// beats in each phase of a run: any work that holds the event loop up shows as a long gap.
class Heartbeat {
public:
    struct Gap {
        QString phase;
        qint64 longestMs = 0;
        qint64 atMs = 0; // when the longest gap ended, from the start of the run
    };

    explicit Heartbeat(const QElapsedTimer& clock);

    // Gaps that end from now on count for this phase.
    void enter(const QString& phase);
    const QList<Gap>& gaps() const { return m_gaps; }

private:
    void beat();

    const QElapsedTimer& m_clock;
    QTimer m_timer;
    qint64 m_lastBeat = 0;
    QList<Gap> m_gaps;
};
