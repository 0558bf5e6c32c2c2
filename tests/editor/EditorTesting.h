#pragma once

#include <QApplication>
#include <QImage>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPoint>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <QWindow>

// What the editor's tests share: images whose pixels tell where they are, and the user's mouse.
namespace EditorTesting {

// Pixel (x, y) is (x mod 256, y mod 256, high bits of x and y) and opaque, so any pixel of a crop
// tells exactly where in the original it came from (up to 4096 × 4096).
inline QImage coordinateImage(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x & 0xff, y & 0xff, ((x >> 8) << 4) | (y >> 8)));
    }
    return image;
}

inline QPoint coordinateOf(QRgb pixel)
{
    return { qRed(pixel) | ((qBlue(pixel) >> 4) << 8), qGreen(pixel) | ((qBlue(pixel) & 0xf) << 8) };
}

// Whether image is exactly the part of coordinateImage(...) at pixels.
inline bool isCoordinateCrop(const QImage& image, const QRect& pixels)
{
    if (image.size() != pixels.size())
        return false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (coordinateOf(image.pixel(x, y)) != pixels.topLeft() + QPoint(x, y))
                return false;
        }
    }
    return true;
}

// The mouse as the window system delivers it: through the widget's window, with the button held
// during the moves. Points are in widget coordinates and may lie outside the widget.
inline QPoint inWindow(QWidget* widget, QPoint point)
{
    return widget->mapTo(widget->window(), point);
}

inline void press(QWidget* widget, QPoint point, Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mousePress(widget->window()->windowHandle(), button, Qt::NoModifier, inWindow(widget, point));
}

inline void moveTo(QWidget* widget, QPoint point)
{
    QTest::mouseMove(widget->window()->windowHandle(), inWindow(widget, point));
}

inline void release(QWidget* widget, QPoint point, Qt::MouseButton button = Qt::LeftButton)
{
    QTest::mouseRelease(widget->window()->windowHandle(), button, Qt::NoModifier, inWindow(widget, point));
}

// Press at from, drag through the middle to to, release there.
inline void drag(QWidget* widget, QPoint from, QPoint to)
{
    press(widget, from);
    moveTo(widget, (from + to) / 2);
    moveTo(widget, to);
    release(widget, to);
}

// A drag at points between pixels, which the window system's whole-pixel positions cannot reach.
inline void dragPrecisely(QWidget* widget, QPointF from, QPointF to)
{
    const auto send
        = [widget](QEvent::Type type, QPointF point, Qt::MouseButton button, Qt::MouseButtons buttons) {
              QMouseEvent event(type, point, widget->mapToGlobal(point), button, buttons, Qt::NoModifier);
              QApplication::sendEvent(widget, &event);
          };
    send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
}

// What the program's modal alert said, once it has been answered.
struct AlertAnswer {
    bool seen = false;
    QString title;
    QString text;
    QString informativeText;
    QStringList buttons;
};

// Watches for the next modal alert and answers it with a click on its first button, recording its
// texts first. The alert blocks in its own event loop, so the answer comes from a timer.
inline void answerNextAlert(AlertAnswer* answer)
{
    auto* timer = new QTimer;
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        answer->seen = true;
        answer->title = box->windowTitle();
        answer->text = box->text();
        answer->informativeText = box->informativeText();
        for (QAbstractButton* button : box->buttons())
            answer->buttons.append(button->text());
        timer->stop();
        timer->deleteLater();
        QTest::mouseClick(box->buttons().constFirst(), Qt::LeftButton);
    });
    timer->start();
}

// Counts the quit requests that reach the application object and holds them back.
struct QuitCounter : QObject {
    int quits = 0;
    QuitCounter() { QCoreApplication::instance()->installEventFilter(this); }
    ~QuitCounter() override { QCoreApplication::instance()->removeEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == QCoreApplication::instance() && event->type() == QEvent::Quit) {
            ++quits;
            return true;
        }
        return false;
    }
};

} // namespace EditorTesting
