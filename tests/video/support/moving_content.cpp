// vexet-moving-content: a window whose picture changes every frame, for recordings in tests and
// benchmarks. Usage: vexet-moving-content X Y WIDTH HEIGHT FPS [bars|noise]
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTimer>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

class Content : public QWidget {
public:
    Content(bool noise, int fps)
        : QWidget(nullptr, Qt::Window | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint)
        , m_noise(noise)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setAttribute(Qt::WA_NoSystemBackground);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            ++m_frame;
            repaint();
        });
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.start(1000 / fps);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        if (m_noise) {
            if (m_image.size() != size())
                m_image = QImage(size(), QImage::Format_RGB32);
            auto* pixels = reinterpret_cast<quint32*>(m_image.bits());
            QRandomGenerator::global()->fillRange(pixels, m_image.sizeInBytes() / 4);
            painter.drawImage(0, 0, m_image);
            return;
        }
        // Colour bars that scroll, and a box that crosses them: like a moving document or video.
        const int bars = 8;
        const int barWidth = std::max(1, width() / bars);
        const int shift = (m_frame * 6) % std::max(1, width());
        for (int i = -1; i <= bars; ++i) {
            const QColor colour = QColor::fromHsv((i + bars) * 360 / bars % 360, 200, 220);
            painter.fillRect(QRect(i * barWidth + shift % barWidth, 0, barWidth, height()), colour);
        }
        const int box = std::max(8, height() / 5);
        painter.fillRect(QRect((m_frame * 9) % std::max(1, width() - box),
                             (m_frame * 5) % std::max(1, height() - box), box, box),
            Qt::white);
        painter.setPen(Qt::black);
        painter.drawText(rect().adjusted(20, 20, -20, -20), QString::number(m_frame));
    }

private:
    bool m_noise;
    QTimer m_timer;
    QImage m_image;
    int m_frame = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() < 6) {
        qWarning("usage: vexet-moving-content X Y WIDTH HEIGHT FPS [bars|noise]");
        return 2;
    }
    Content content(arguments.value(6) == u"noise"_s, std::max(1, arguments.at(5).toInt()));
    content.setGeometry(
        arguments.at(1).toInt(), arguments.at(2).toInt(), arguments.at(3).toInt(), arguments.at(4).toInt());
    content.show();
    return application.exec();
}
