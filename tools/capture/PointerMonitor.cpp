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
        connect(window.get(), &RegionSelectionWindow::exposed, this, [this] {
            if (++m_exposed == qsizetype(m_windows.size()))
                m_patience.start(patienceMs);
        });
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
        answer(0);
        return;
    }
    for (const auto& window : m_windows)
        window->showFullScreen();
}

void PointerMonitor::answer(qsizetype monitor)
{
    if (m_answered)
        return;
    m_answered = true;
    m_patience.stop();
    for (const auto& window : m_windows)
        window->hide();
    Q_EMIT found(monitor);
}
