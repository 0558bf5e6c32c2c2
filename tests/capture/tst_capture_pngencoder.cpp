#include "PngEncoder.h"

#include <QBuffer>
#include <QImageReader>
#include <QRandomGenerator>
#include <QTest>
#include <QtEndian>
#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray encoded(const QImage& image)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!PngEncoder::write(image, buffer))
        return {};
    return buffer.data();
}

QImage decoded(const QByteArray& data)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    return reader.read();
}

QImage noise(int width, int height, quint32 seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = 0xff000000u | (random.generate() & 0xffffff);
    }
    return image;
}

// Pixels compared as RGB, whatever the formats and the unused byte.
bool sameColours(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return false;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if ((a.pixel(x, y) & 0xffffff) != (b.pixel(x, y) & 0xffffff))
                return false;
        }
    }
    return true;
}

struct Chunk {
    QByteArray type;
    QByteArray data;
    bool crcMatches = false;
};

QList<Chunk> chunks(const QByteArray& png)
{
    QList<Chunk> result;
    qsizetype offset = 8;
    while (offset + 12 <= png.size()) {
        const quint32 length = qFromBigEndian<quint32>(png.constData() + offset);
        if (offset + 12 + qsizetype(length) > png.size())
            break;
        Chunk chunk;
        chunk.type = png.mid(offset + 4, 4);
        chunk.data = png.mid(offset + 8, length);
        const quint32 stored = qFromBigEndian<quint32>(png.constData() + offset + 8 + length);
        const uLong crc = crc32(0, reinterpret_cast<const Bytef*>(png.constData() + offset + 4), length + 4);
        chunk.crcMatches = stored == crc;
        result.append(chunk);
        offset += 12 + length;
    }
    return result;
}

} // namespace

// The PNG writer of the hand-over file: what it writes must read back pixel for pixel.
class TestCapturePngEncoder : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsBackExactly_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::newRow("1 x 1") << noise(1, 1, 1);
        QTest::newRow("one row") << noise(1000, 1, 2);
        QTest::newRow("one column") << noise(1, 1000, 3);
        QTest::newRow("fewer rows than a band") << noise(333, 63, 4);
        QTest::newRow("odd size in several bands") << noise(517, 1031, 5);
        QImage flat(1920, 1080, QImage::Format_RGB32);
        flat.fill(qRgb(12, 34, 56));
        QTest::newRow("flat") << flat;
        QImage gradient(3840, 2160, QImage::Format_RGB32);
        for (int y = 0; y < gradient.height(); ++y) {
            for (int x = 0; x < gradient.width(); ++x)
                gradient.setPixel(x, y, qRgb(x & 0xff, y & 0xff, (x ^ y) & 0xff));
        }
        QTest::newRow("4K gradient") << gradient;
    }

    void readsBackExactly()
    {
        QFETCH(QImage, image);
        const QByteArray png = encoded(image);
        QVERIFY(!png.isEmpty());
        QVERIFY(png.startsWith("\x89PNG\r\n\x1a\n"));
        const QImage back = decoded(png);
        QVERIFY(!back.isNull());
        QVERIFY(sameColours(back, image));
    }

    void writesWellFormedChunks()
    {
        const QImage image = noise(640, 480, 6);
        const QList<Chunk> list = chunks(encoded(image));
        QVERIFY(list.size() >= 4);
        QCOMPARE(list.first().type, QByteArray("IHDR"));
        QCOMPARE(list.last().type, QByteArray("IEND"));
        const QByteArray header = list.first().data;
        QCOMPARE(header.size(), 13);
        QCOMPARE(qFromBigEndian<quint32>(header.constData()), 640u);
        QCOMPARE(qFromBigEndian<quint32>(header.constData() + 4), 480u);
        QCOMPARE(header.at(8), char(8)); // 8 bits per sample
        QCOMPARE(header.at(9), char(2)); // RGB
        QByteArray stream;
        for (const Chunk& chunk : list) {
            QVERIFY2(chunk.crcMatches, chunk.type.constData());
            if (chunk.type == "IDAT")
                stream += chunk.data;
            else
                QVERIFY(chunk.type == "IHDR" || chunk.type == "IEND");
        }
        // One zlib stream with its checksum: zlib itself inflates it to the filtered rows.
        QByteArray rows(480 * (1 + 640 * 3), Qt::Uninitialized);
        uLongf size = static_cast<uLongf>(rows.size());
        QCOMPARE(uncompress(reinterpret_cast<Bytef*>(rows.data()), &size,
                     reinterpret_cast<const Bytef*>(stream.constData()), static_cast<uLong>(stream.size())),
            Z_OK);
        QCOMPARE(qsizetype(size), rows.size());
    }

    void compressesWhatCompresses()
    {
        QImage flat(1920, 1080, QImage::Format_RGB32);
        flat.fill(qRgb(200, 200, 200));
        QVERIFY(encoded(flat).size() < 100 * 1024);
    }

    void takesOtherFormatsAndDropsAlpha()
    {
        QImage translucent(50, 40, QImage::Format_ARGB32);
        translucent.fill(qRgba(10, 20, 30, 77));
        QImage back = decoded(encoded(translucent));
        QVERIFY(!back.hasAlphaChannel());
        QCOMPARE(back.pixel(3, 3) & 0xffffff, qRgb(10, 20, 30) & 0xffffff);

        QImage rgb888 = noise(70, 90, 7).convertToFormat(QImage::Format_RGB888);
        QVERIFY(sameColours(decoded(encoded(rgb888)), rgb888));
    }

    void refusesNothing()
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QVERIFY(!PngEncoder::write(QImage(), buffer));
        QVERIFY(buffer.data().isEmpty());
    }

    void tellsAWriteFailure()
    {
        QBuffer closed;
        QVERIFY(!PngEncoder::write(noise(10, 10, 8), closed));
    }
};

QTEST_GUILESS_MAIN(TestCapturePngEncoder)
#include "tst_capture_pngencoder.moc"
