// vexet-moving-content: a window whose picture changes every frame, for recordings in tests and
// benchmarks. Usage: vexet-moving-content X Y WIDTH HEIGHT FPS [bars|noise|desktop]
//
// bars: scrolling colour bars and a box crossing them; noise: new random pixels every frame;
// desktop: closer to what users record: a page of text scrolling on the left, a photograph-like
// picture (smooth colours with fine grain) panning on the right.
#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

class Content : public QWidget {
public:
    enum class Kind { Bars, Noise, Desktop };

    Content(Kind kind, int fps)
        : QWidget(nullptr, Qt::Window | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint)
        , m_kind(kind)
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
        if (m_kind == Kind::Desktop) {
            paintDesktop(painter);
            return;
        }
        if (m_kind == Kind::Noise) {
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
    void paintDesktop(QPainter& painter)
    {
        const int half = width() / 2;
        if (m_image.size() != QSize(width() - half, height()) * 2)
            m_image = photograph(QSize(width() - half, height()) * 2);
        // The picture pans along a slow diagonal and back.
        const int period = 2 * std::max(1, m_image.width() - (width() - half));
        const int step = (m_frame * 2) % period;
        const int x = step < period / 2 ? step : period - step;
        painter.drawImage(QPoint(half, 0), m_image,
            QRect(x, x * (m_image.height() - height()) / std::max(1, period / 2), width() - half, height()));
        // A page of text scrolls by a pixel a frame.
        painter.fillRect(QRect(0, 0, half, height()), Qt::white);
        painter.setPen(Qt::black);
        const int line = painter.fontMetrics().lineSpacing() + 4;
        const int offset = m_frame % line;
        for (int y = -offset, n = m_frame / line; y < height(); y += line, ++n) {
            painter.drawText(QPoint(24, y + line), textLine(n));
        }
    }

    static QString textLine(int n)
    {
        static const QStringList words = { u"kayıt"_s, u"ekran"_s, u"görüntü"_s, u"pencere"_s, u"alan"_s,
            u"masaüstü"_s, u"ses"_s, u"mikrofon"_s, u"dosya"_s, u"kırp"_s, u"kaydet"_s, u"kopyala"_s,
            u"geri"_s, u"al"_s, u"süre"_s, u"çerçeve"_s };
        QString text;
        for (int i = 0; i < 14; ++i)
            text += words.at((n * 7 + i * i * 3 + i) % words.size()) + (i % 5 == 4 ? u". "_s : u" "_s);
        return text;
    }

    // Smooth colour fields with a grain of a few levels, like a photograph; the same every run.
    static QImage photograph(QSize size)
    {
        QImage image(size, QImage::Format_RGB32);
        QRandomGenerator grain(7);
        for (int y = 0; y < size.height(); ++y) {
            auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < size.width(); ++x) {
                const double u = x / 180.0;
                const double v = y / 140.0;
                const int noise = static_cast<int>(grain.bounded(9)) - 4;
                const auto channel
                    = [noise](double value) { return std::clamp(static_cast<int>(value) + noise, 0, 255); };
                row[x] = qRgb(channel(128 + 90 * std::sin(u + 0.7 * std::cos(v))),
                    channel(120 + 80 * std::sin(0.6 * v + 0.4 * u * std::sin(v / 3))),
                    channel(110 + 70 * std::cos(0.5 * u - 0.8 * v)));
            }
        }
        return image;
    }

    Kind m_kind;
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
    const QString kind = arguments.value(6);
    Content content(kind == u"noise"_s ? Content::Kind::Noise
            : kind == u"desktop"_s     ? Content::Kind::Desktop
                                       : Content::Kind::Bars,
        std::max(1, arguments.at(5).toInt()));
    content.setGeometry(
        arguments.at(1).toInt(), arguments.at(2).toInt(), arguments.at(3).toInt(), arguments.at(4).toInt());
    content.show();
    return application.exec();
}
