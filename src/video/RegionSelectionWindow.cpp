#include "RegionSelectionWindow.h"

#include "RegionSelectionView.h"

#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

RegionSelectionWindow::RegionSelectionWindow(QScreen* screen, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_screen(screen)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    const QRect geometry = screen->geometry();
    m_view = new RegionSelectionView(screen->grabWindow(0).toImage(), this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setGeometry(geometry);
    setFixedSize(geometry.size());
}

void RegionSelectionWindow::present()
{
    winId();
    windowHandle()->setScreen(m_screen);
    setGeometry(m_screen->geometry());
    showFullScreen();
    raise();
    activateWindow();
    m_view->setFocus();
}
