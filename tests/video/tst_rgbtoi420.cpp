#include "GstPointers.h"
#include "GstSupport.h"
#include "RgbToI420.h"

#include <QColor>
#include <QTest>
#include <cmath>
#include <gst/video/video.h>

using namespace Qt::StringLiterals;

namespace {

// The element's pictures for one frame given to it, plane by plane without the rows' padding.
struct Converted {
    QString error;
    QString caps;
    int width = 0;
    int height = 0;
    QList<QByteArray> planes; // Y, U, V

    int at(int plane, int x, int y) const
    {
        const int columns = plane == 0 ? width : (width + 1) / 2;
        return static_cast<unsigned char>(planes.at(plane).at(y * columns + x));
    }
};

QByteArray bgrx(const QList<QColor>& pixels, int alpha = 255)
{
    QByteArray bytes;
    for (const QColor& pixel : pixels) {
        for (const int value : { pixel.blue(), pixel.green(), pixel.red(), alpha })
            bytes.append(static_cast<char>(value));
    }
    return bytes;
}

Converted convert(const char* format, int width, int height, const QByteArray& pixels)
{
    Converted result;
    const QByteArray description = QByteArray("appsrc name=in format=time caps=video/x-raw,format=") + format
        + ",width=" + QByteArray::number(width) + ",height=" + QByteArray::number(height)
        + ",framerate=30/1 ! " + RgbToI420::elementName + " ! appsink name=out sync=false";
    GstSupport::Parsed parsed = GstSupport::parse(description);
    if (!parsed.pipeline) {
        result.error = GstSupport::fromGError(parsed.error.get()).localizedDescription();
        return result;
    }
    GstElementPtr in(gst_bin_get_by_name(asBin(parsed.pipeline.get()), "in"));
    GstElementPtr out(gst_bin_get_by_name(asBin(parsed.pipeline.get()), "out"));
    gst_element_set_state(parsed.pipeline.get(), GST_STATE_PLAYING);
    GstBuffer* buffer = gst_buffer_new_memdup(pixels.constData(), static_cast<gsize>(pixels.size()));
    GST_BUFFER_PTS(buffer) = 0;
    GST_BUFFER_DURATION(buffer) = GST_SECOND / 30;
    GstFlowReturn flow = GST_FLOW_ERROR;
    g_signal_emit_by_name(in.get(), "push-buffer", buffer, &flow);
    gst_buffer_unref(buffer);
    g_signal_emit_by_name(in.get(), "end-of-stream", &flow);
    // A picture, or nothing once the stream has ended or failed.
    GstSample* pulled = nullptr;
    g_signal_emit_by_name(out.get(), "try-pull-sample", GST_SECOND * 10, &pulled);
    GstSamplePtr sample(pulled);
    gst_element_set_state(parsed.pipeline.get(), GST_STATE_NULL);
    if (!sample) {
        result.error = u"no picture came out"_s;
        return result;
    }
    GCharPtr caps(gst_caps_to_string(gst_sample_get_caps(sample.get())));
    result.caps = QString::fromUtf8(caps.get());
    GstVideoInfo info;
    GstVideoFrame frame;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get()))
        || !gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample.get()), GST_MAP_READ)) {
        result.error = u"unreadable picture: "_s + result.caps;
        return result;
    }
    result.width = GST_VIDEO_INFO_WIDTH(&info);
    result.height = GST_VIDEO_INFO_HEIGHT(&info);
    for (guint plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 ? result.height : (result.height + 1) / 2;
        const int columns = plane == 0 ? result.width : (result.width + 1) / 2;
        const auto* data = static_cast<const char*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        QByteArray bytes;
        for (int row = 0; row < rows; ++row)
            bytes.append(data + row * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane), columns);
        result.planes.append(bytes);
    }
    gst_video_frame_unmap(&frame);
    return result;
}

// BT.601's matrix in studio range, in exact arithmetic: Y, U, V of a colour.
std::array<double, 3> bt601(double red, double green, double blue)
{
    const double y = 0.299 * red + 0.587 * green + 0.114 * blue;
    return { 16 + y * 219 / 255, 128 + (blue - y) / 1.772 * 224 / 255, 128 + (red - y) / 1.402 * 224 / 255 };
}

} // namespace

// The colour conversion of recordings, on pictures whose every value is known.
class TestRgbToI420 : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { GstSupport::ensureInitialized(); }

    void plainColoursHaveTheirValuesInBt601()
    {
        const QList<QColor> colours { Qt::white, Qt::black, Qt::red, Qt::green, Qt::blue,
            QColor(40, 120, 200), QColor(128, 128, 128), QColor(250, 200, 10) };
        for (const QColor& colour : colours) {
            const Converted converted = convert("BGRx", 4, 2, bgrx(QList<QColor>(8, colour)));
            QVERIFY2(converted.error.isEmpty(), qPrintable(converted.error));
            const std::array<double, 3> expected = bt601(colour.red(), colour.green(), colour.blue());
            for (int plane = 0; plane < 3; ++plane) {
                const int value = converted.at(plane, 0, 0);
                QVERIFY2(std::abs(value - expected.at(plane)) <= 1.0,
                    qPrintable(u"%1, plane %2: %3 for %4"_s.arg(colour.name())
                                   .arg(plane)
                                   .arg(value)
                                   .arg(expected.at(plane))));
            }
        }
    }

    void eachColourSampleIsTheMeanOfItsFourPixels()
    {
        // Red on the left, blue on the right: a sample sited on the left pixels would be red's.
        const Converted converted = convert("BGRx", 2, 2, bgrx({ Qt::red, Qt::blue, Qt::red, Qt::blue }));
        QVERIFY2(converted.error.isEmpty(), qPrintable(converted.error));
        const std::array<double, 3> red = bt601(255, 0, 0);
        const std::array<double, 3> blue = bt601(0, 0, 255);
        QVERIFY(std::abs(converted.at(0, 0, 1) - red.at(0)) <= 1.0);
        QVERIFY(std::abs(converted.at(0, 1, 1) - blue.at(0)) <= 1.0);
        const std::array<double, 3> mean = bt601(127.5, 0, 127.5);
        for (int plane = 1; plane < 3; ++plane)
            QVERIFY2(std::abs(converted.at(plane, 0, 0) - mean.at(plane)) <= 1.0,
                qPrintable(
                    u"plane %1: %2 for %3"_s.arg(plane).arg(converted.at(plane, 0, 0)).arg(mean.at(plane))));
    }

    void alphaIsIgnored()
    {
        const QList<QColor> pixels { QColor(10, 200, 90), QColor(220, 30, 60), QColor(0, 0, 0),
            QColor(255, 255, 0) };
        const Converted opaque = convert("BGRA", 2, 2, bgrx(pixels));
        const Converted clear = convert("BGRA", 2, 2, bgrx(pixels, 0));
        QVERIFY2(opaque.error.isEmpty() && clear.error.isEmpty(), qPrintable(opaque.error + clear.error));
        QCOMPARE(clear.planes, opaque.planes);
        QCOMPARE(clear.planes, convert("BGRx", 2, 2, bgrx(pixels)).planes);
    }

    void paddedRowsAndOddSizesKeepEveryPixelInPlace()
    {
        // 11 × 5: rows of I420 are padded to four bytes, and the last column and row have half a block.
        const int width = 11;
        const int height = 5;
        QList<QColor> pixels;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                pixels.append(x < 6 ? QColor(Qt::black) : QColor(Qt::white));
        const Converted converted = convert("BGRx", width, height, bgrx(pixels));
        QVERIFY2(converted.error.isEmpty(), qPrintable(converted.error));
        QCOMPARE(QSize(converted.width, converted.height), QSize(width, height));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                QCOMPARE(converted.at(0, x, y), x < 6 ? 16 : 235);
        for (int y = 0; y < (height + 1) / 2; ++y)
            for (int x = 0; x < (width + 1) / 2; ++x)
                for (int plane = 1; plane < 3; ++plane)
                    QCOMPARE(converted.at(plane, x, y), 128);
    }

    void thePicturesDeclareTheirColours()
    {
        const Converted converted = convert("BGRx", 4, 2, bgrx(QList<QColor>(8, Qt::white)));
        QVERIFY2(converted.error.isEmpty(), qPrintable(converted.error));
        for (const QString& field :
            { u"format=(string)I420"_s, u"colorimetry=(string)2:4:5:1"_s, u"chroma-site=(string)jpeg"_s,
                u"width=(int)4"_s, u"height=(int)2"_s, u"framerate=(fraction)30/1"_s })
            QVERIFY2(converted.caps.contains(field), qPrintable(converted.caps));
    }

    void otherPixelFormatsAreRefused()
    {
        const Converted converted = convert("RGBx", 4, 2, bgrx(QList<QColor>(8, Qt::white)));
        QVERIFY2(!converted.error.isEmpty(), qPrintable(converted.caps));
    }
};

QTEST_GUILESS_MAIN(TestRgbToI420)
#include "tst_rgbtoi420.moc"
