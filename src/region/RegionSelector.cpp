#include "RegionSelector.h"

#include "RegionSelectionWindow.h"

#include <QGuiApplication>
#include <QScreen>

RegionSelector::RegionSelector(
    QList<Sheet> sheets, const RegionSelectionLook& look, double minimumSide, QObject* parent)
    : QObject(parent)
    , m_sheets(std::move(sheets))
    , m_minimumSide(minimumSide)
{
    for (qsizetype i = 0; i < m_sheets.size(); ++i) {
        const Sheet& sheet = m_sheets.at(i);
        auto window = std::make_unique<RegionSelectionWindow>(sheet.picture, look);
        Qt::WindowFlags flags = Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
        if (!sheet.screen)
            flags |= Qt::BypassWindowManagerHint;
        window->setFlags(flags);
        window->setCursor(Qt::CrossCursor);
        if (sheet.screen)
            window->setScreen(sheet.screen);
        window->setGeometry(sheet.geometry);
        connect(window.get(), &RegionSelectionWindow::buttonPressed, this,
            [this, i](Qt::MouseButton button, const QPointF& position) { pressed(i, button, position); });
        connect(window.get(), &RegionSelectionWindow::pointerMoved, this,
            [this, i](const QPointF& position) { moved(i, position); });
        connect(window.get(), &RegionSelectionWindow::buttonReleased, this,
            [this, i](Qt::MouseButton button, const QPointF& position) { released(i, button, position); });
        connect(window.get(), &RegionSelectionWindow::escapePressed, this, &RegionSelector::cancel);
        m_windows.push_back(std::move(window));
    }
}

RegionSelector::~RegionSelector() = default;

RegionSelector::Sheet RegionSelector::monitorSheet(QScreen* screen, const QImage& picture)
{
    const QRect geometry = screen->geometry();
    const qreal ratio = screen->devicePixelRatio();
    Sheet sheet { picture, geometry, screen, {}, QRect(QPoint(0, 0), picture.size()) };
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* other : screens) {
        const QRectF place = QRectF(other->geometry().translated(-geometry.topLeft()));
        sheet.monitors.append(QRectF(place.topLeft() * ratio, place.size() * ratio).toAlignedRect());
    }
    return sheet;
}

void RegionSelector::present()
{
    for (qsizetype i = 0; i < sheetCount(); ++i) {
        RegionSelectionWindow* shown = window(i);
        if (m_sheets.at(i).screen)
            shown->showFullScreen();
        else
            shown->show();
        shown->raise();
        shown->requestActivate();
    }
}

void RegionSelector::cancel()
{
    finish(-1, std::nullopt);
}

void RegionSelector::pressed(qsizetype sheet, Qt::MouseButton button, const QPointF& position)
{
    if (m_finished)
        return;
    if (button == Qt::RightButton) {
        m_rightPressed = true;
        return;
    }
    if (button != Qt::LeftButton || (m_selection && m_selection->isDragging() && sheet != m_dragSheet))
        return;
    if (sheet != m_dragSheet) {
        if (m_dragSheet >= 0)
            window(m_dragSheet)->setLit({});
        const Sheet& place = m_sheets.at(sheet);
        const double minimum = m_minimumSide * window(sheet)->devicePixelRatio();
        m_selection.emplace(place.monitors, place.bounds, minimum);
        m_dragSheet = sheet;
    }
    m_selection->press(position);
}

void RegionSelector::moved(qsizetype sheet, const QPointF& position)
{
    if (m_finished || sheet != m_dragSheet || !m_selection->isDragging())
        return;
    m_selection->move(position);
    window(sheet)->setLit(m_selection->pixels());
}

void RegionSelector::released(qsizetype sheet, Qt::MouseButton button, const QPointF& position)
{
    if (m_finished)
        return;
    if (button == Qt::RightButton && m_rightPressed) {
        cancel();
        return;
    }
    if (button != Qt::LeftButton || sheet != m_dragSheet || !m_selection->isDragging())
        return;
    const std::optional<QRect> chosen = m_selection->release(position);
    window(sheet)->setLit(m_selection->pixels());
    if (chosen)
        finish(sheet, chosen);
    else
        Q_EMIT refused();
}

void RegionSelector::finish(qsizetype sheet, std::optional<QRect> pixels)
{
    if (m_finished)
        return;
    m_finished = true;
    // The desktop is given back at once; the picture is at hand anyway.
    for (const auto& window : m_windows)
        window->hide();
    Q_EMIT finished(sheet, pixels);
}
