#include "PatternDesktop.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTest>

using namespace Qt::StringLiterals;

PatternDesktop::PatternDesktop()
{
    renew();
}

void PatternDesktop::renew()
{
    m_first.reset();
    m_second.reset();
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.size() >= 2) {
        m_first = std::make_unique<DevicePattern>(screens.at(0), 1);
        m_second = std::make_unique<DevicePattern>(screens.at(1), 2);
    }
}

QImage PatternDesktop::expected(int output) const
{
    return (output == 0 ? m_first : m_second)->expected();
}

bool PatternDesktop::show()
{
    // Now and then sway leaves a window shown again after a while without its picture: new
    // windows are shown then.
    return showOnce(10000) || (renew(), showOnce(timeoutMs));
}

bool PatternDesktop::showOnce(int waitMs)
{
    if (!m_first || !m_second)
        return false;
    for (DevicePattern* pattern : { m_first.get(), m_second.get() }) {
        pattern->showFullScreen();
        pattern->update();
    }
    // The compositor draws the pointer into its pictures: it stays on the other output meanwhile.
    const QRect first = QGuiApplication::screens().at(0)->geometry();
    const QRect second = QGuiApplication::screens().at(1)->geometry();
    m_sway.parkPointer(second.center());
    const QString firstDiffers = m_pictures.waitForOutput(u"HEADLESS-1"_s, expected(0), waitMs);
    m_sway.parkPointer(first.center());
    const QString secondDiffers
        = firstDiffers.isEmpty() ? m_pictures.waitForOutput(u"HEADLESS-2"_s, expected(1), waitMs) : QString();
    if (firstDiffers.isEmpty() && secondDiffers.isEmpty())
        return true;
    qWarning("the outputs do not show their patterns: %s", qPrintable(firstDiffers + secondDiffers));
    return false;
}

void PatternDesktop::hide()
{
    m_first->hide();
    m_second->hide();
}

bool PatternDesktop::equalBesidesPointer(const QImage& actual, const QImage& expected, QPoint pointer)
{
    if (actual.size() != expected.size())
        return false;
    const QRect skipped(pointer - QPoint(pointerBox, pointerBox), QSize(2 * pointerBox, 2 * pointerBox));
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x) {
            if (!skipped.contains(x, y) && actual.pixel(x, y) != expected.pixel(x, y))
                return false;
        }
    }
    return true;
}
