#include "PatternWindow.h"

#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

PatternWindow::PatternWindow(QColor base)
    : m_base(base)
{
}

// Qt 6.4's Wayland plugin can free a frame callback twice when the window is torn down on this
// thread while the compositor's answer to it is handled on the plugin's frame thread. The window
// therefore goes only once its last frame has been answered: an update request is delivered no
// sooner than that, and it is swallowed so that nothing is drawn again.
PatternWindow::~PatternWindow()
{
    if (!isExposed())
        return;
    m_leaving = true;
    requestUpdate();
    if (!QTest::qWaitFor([this] { return m_lastFrameDone; }, 2000))
        qWarning("%s: its last frame was not answered within 2 s", qPrintable(title()));
}

bool PatternWindow::event(QEvent* event)
{
    if (m_leaving && event->type() == QEvent::UpdateRequest) {
        m_lastFrameDone = true;
        return true;
    }
    return QRasterWindow::event(event);
}

QRgb PatternWindow::colorAt(int x, int y) const
{
    const int stripe = (x / 8 + 3 * (y / 8)) % 5;
    return qRgb((m_base.red() + 40 * stripe) % 256, (m_base.green() + 25 * stripe) % 256, m_base.blue());
}

QImage PatternWindow::expected(QSize size) const
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            line[x] = colorAt(x, y);
    }
    return image;
}

QString PatternWindow::describeEvents() const
{
    QStringList lines;
    for (const Event& e : m_events) {
        lines.append(e.key ? u"key event %1, key %2"_s.arg(int(e.type)).arg(e.key)
                           : u"pointer event %1 at %2,%3, buttons %4"_s.arg(int(e.type))
                                 .arg(e.position.x())
                                 .arg(e.position.y())
                                 .arg(e.buttons.toInt()));
    }
    return u"events: "_s + (lines.isEmpty() ? u"none"_s : lines.join(u"; "_s));
}

void PatternWindow::paintEvent(QPaintEvent*)
{
    // Painted in logical pixels without smoothing: at a device pixel ratio of 2 every pattern
    // pixel becomes a 2 x 2 block.
    QPainter painter(this);
    painter.drawImage(QPoint(0, 0), expected(size()));
    ++m_paints;
}

void PatternWindow::record(QMouseEvent* event)
{
    m_events.append({ event->type(), event->position().toPoint(), event->buttons(), 0 });
}

void PatternWindow::mousePressEvent(QMouseEvent* event)
{
    record(event);
}

void PatternWindow::mouseMoveEvent(QMouseEvent* event)
{
    record(event);
}

void PatternWindow::mouseReleaseEvent(QMouseEvent* event)
{
    record(event);
}

void PatternWindow::keyPressEvent(QKeyEvent* event)
{
    m_events.append({ event->type(), QPoint(), Qt::NoButton, event->key() });
}

void PatternWindow::keyReleaseEvent(QKeyEvent* event)
{
    m_events.append({ event->type(), QPoint(), Qt::NoButton, event->key() });
}
