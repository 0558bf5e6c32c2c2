#include "PointerMonitor.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

// The frozen picture exactly as it is: no dimming, nothing lit.
RegionSelectionLook unchanged()
{
    RegionSelectionLook look;
    look.dimming = 0;
    look.sizeLabel = false;
    return look;
}

} // namespace

PointerMonitor::PointerMonitor(const QList<QImage>& pictures)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (qsizetype i = 0; i < screens.size() && i < pictures.size(); ++i) {
        auto window = std::make_unique<RegionSelectionWindow>(pictures.at(i), unchanged());
        window->setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        window->setScreen(screens.at(i));
        window->setGeometry(screens.at(i)->geometry());
        connect(window.get(), &RegionSelectionWindow::entered, this, [this, i] { answer(i); });
        connect(window.get(), &RegionSelectionWindow::pointerMoved, this, [this, i] { answer(i); });
        connect(window.get(), &RegionSelectionWindow::exposed, this, [this, i] { exposed(i); });
        m_windows.push_back(std::move(window));
    }
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        answer(qMax<qsizetype>(0, QGuiApplication::screens().indexOf(QGuiApplication::primaryScreen())));
    });
}

PointerMonitor::~PointerMonitor() = default;

void PointerMonitor::start()
{
    if (m_windows.empty()) {
        m_answer = 0;
        finish();
        return;
    }
    for (const auto& window : m_windows)
        window->showFullScreen();
}

void PointerMonitor::exposed(qsizetype monitor)
{
    m_exposedOrder.removeAll(monitor);
    m_exposedOrder.append(monitor);
    if (m_showingAgain) {
        if (m_answer == monitor)
            finish();
        return;
    }
    if (!m_answer && m_exposedOrder.size() == qsizetype(m_windows.size()))
        m_patience.start(patienceMs);
}

void PointerMonitor::answer(qsizetype monitor)
{
    if (m_answer)
        return;
    m_answer = monitor;
    m_patience.stop();
    if (m_exposedOrder.isEmpty() || m_exposedOrder.last() == monitor) {
        finish();
        return;
    }
    // Another window came later: show this one again, so that it is the last.
    m_showingAgain = true;
    RegionSelectionWindow* window = m_windows.at(std::size_t(monitor)).get();
    window->hide();
    window->showFullScreen();
}

void PointerMonitor::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    // The others first, the monitor's own last.
    for (qsizetype i = 0; i < qsizetype(m_windows.size()); ++i) {
        if (i != *m_answer)
            m_windows.at(std::size_t(i))->hide();
    }
    if (*m_answer < qsizetype(m_windows.size()))
        m_windows.at(std::size_t(*m_answer))->hide();
    Q_EMIT found(*m_answer);
}
