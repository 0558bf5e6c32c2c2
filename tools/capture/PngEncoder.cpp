#include "PngEncoder.h"

#include <QThread>
#include <algorithm>
#include <array>
#include <cstring>
#include <thread>
#include <vector>
#include <zlib.h>

namespace {

constexpr int minimumBandRows = 64;
constexpr int maximumBands = 8;
// PNG chunks may hold up to 2^31 - 1 bytes; stay well below.
constexpr qsizetype maximumChunk = qsizetype(1) << 30;

// One horizontal band of the image, compressed as a piece of the deflate stream that either ends
// on a byte boundary (a full flush) or, for the last band, ends the stream.
struct Band {
    int firstRow = 0;
    int endRow = 0;
    std::vector<unsigned char> deflated;
    uLong adler = 1;
    uLong length = 0;
    bool ok = false;
};

// Rows of an RGB32 image as PNG scanlines: the filter type byte (1 = Sub) and then each byte's
// difference to the same byte of the pixel to its left.
void filterRow(const QImage& image, int y, unsigned char* out)
{
    const auto* pixel = reinterpret_cast<const quint32*>(image.constScanLine(y));
    *out++ = 1;
    unsigned char r0 = 0;
    unsigned char g0 = 0;
    unsigned char b0 = 0;
    for (int x = 0, width = image.width(); x < width; ++x) {
        const quint32 p = pixel[x];
        const auto r = static_cast<unsigned char>(p >> 16);
        const auto g = static_cast<unsigned char>(p >> 8);
        const auto b = static_cast<unsigned char>(p);
        *out++ = static_cast<unsigned char>(r - r0);
        *out++ = static_cast<unsigned char>(g - g0);
        *out++ = static_cast<unsigned char>(b - b0);
        r0 = r;
        g0 = g;
        b0 = b;
    }
}

void compressBand(const QImage& image, Band& band, bool last)
{
    z_stream stream {};
    // Run-length matches only: after the Sub filter, flat areas are runs of zeros, and on
    // photographs this is both faster and smaller than zlib's fastest general level.
    if (deflateInit2(&stream, 1, Z_DEFLATED, -MAX_WBITS, 8, Z_RLE) != Z_OK)
        return;
    const std::size_t rowBytes = 1 + std::size_t(image.width()) * 3;
    const auto rows = static_cast<std::size_t>(band.endRow - band.firstRow);
    band.deflated.resize(deflateBound(&stream, static_cast<uLong>(rowBytes * rows)) + 64);
    stream.next_out = band.deflated.data();
    stream.avail_out = static_cast<uInt>(band.deflated.size());
    std::vector<unsigned char> row(rowBytes);
    bool ok = true;
    for (int y = band.firstRow; y < band.endRow && ok; ++y) {
        filterRow(image, y, row.data());
        band.adler = adler32(band.adler, row.data(), static_cast<uInt>(rowBytes));
        stream.next_in = row.data();
        stream.avail_in = static_cast<uInt>(rowBytes);
        ok = deflate(&stream, Z_NO_FLUSH) == Z_OK && stream.avail_in == 0;
    }
    if (ok) {
        const int result = deflate(&stream, last ? Z_FINISH : Z_FULL_FLUSH);
        ok = last ? result == Z_STREAM_END : (result == Z_OK && stream.avail_out > 0);
    }
    band.deflated.resize(band.deflated.size() - stream.avail_out);
    band.length = static_cast<uLong>(rowBytes * rows);
    band.ok = ok;
    deflateEnd(&stream);
}

void putBigEndian(unsigned char* out, quint32 value)
{
    out[0] = static_cast<unsigned char>(value >> 24);
    out[1] = static_cast<unsigned char>(value >> 16);
    out[2] = static_cast<unsigned char>(value >> 8);
    out[3] = static_cast<unsigned char>(value);
}

bool writeChunk(QIODevice& device, const char* type, const unsigned char* data, qsizetype size)
{
    std::array<unsigned char, 8> head {};
    putBigEndian(head.data(), static_cast<quint32>(size));
    std::memcpy(head.data() + 4, type, 4);
    uLong crc = crc32(0, head.data() + 4, 4);
    if (size > 0)
        crc = crc32(crc, data, static_cast<uInt>(size));
    std::array<unsigned char, 4> tail {};
    putBigEndian(tail.data(), static_cast<quint32>(crc));
    return device.write(reinterpret_cast<const char*>(head.data()), 8) == 8
        && (size == 0 || device.write(reinterpret_cast<const char*>(data), size) == size)
        && device.write(reinterpret_cast<const char*>(tail.data()), 4) == 4;
}

bool writeData(QIODevice& device, const std::vector<unsigned char>& data)
{
    for (qsizetype offset = 0, size = qsizetype(data.size()); offset < size; offset += maximumChunk) {
        if (!writeChunk(device, "IDAT", data.data() + offset, std::min(maximumChunk, size - offset)))
            return false;
    }
    return true;
}

} // namespace

bool PngEncoder::write(const QImage& source, QIODevice& device)
{
    if (source.isNull())
        return false;
    const QImage image = source.format() == QImage::Format_RGB32 || source.format() == QImage::Format_ARGB32
        ? source
        : source.convertToFormat(QImage::Format_RGB32);

    const int bandCount = std::clamp(
        std::min(QThread::idealThreadCount(), image.height() / minimumBandRows), 1, maximumBands);
    std::vector<Band> bands(static_cast<std::size_t>(bandCount));
    const int rowsPerBand = (image.height() + bandCount - 1) / bandCount;
    for (int i = 0; i < bandCount; ++i) {
        bands[std::size_t(i)].firstRow = i * rowsPerBand;
        bands[std::size_t(i)].endRow = std::min(image.height(), (i + 1) * rowsPerBand);
    }
    {
        std::vector<std::jthread> helpers;
        for (int i = 1; i < bandCount; ++i)
            helpers.emplace_back(
                compressBand, std::cref(image), std::ref(bands[std::size_t(i)]), i == bandCount - 1);
        compressBand(image, bands.front(), bandCount == 1);
    }

    uLong adler = bands.front().adler;
    for (const Band& band : bands) {
        if (!band.ok)
            return false;
        if (&band != &bands.front())
            adler = adler32_combine(adler, band.adler, static_cast<z_off_t>(band.length));
    }

    static constexpr std::array<unsigned char, 8> signature { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n' };
    std::array<unsigned char, 13> header {};
    putBigEndian(header.data(), static_cast<quint32>(image.width()));
    putBigEndian(header.data() + 4, static_cast<quint32>(image.height()));
    header[8] = 8; // bits per sample
    header[9] = 2; // colour type: RGB
    // Compression, filter method and interlacing stay 0.

    // The zlib stream: its header (deflate, 32 KiB window, fast compression), the bands, the
    // Adler-32 checksum of everything compressed.
    static constexpr std::array<unsigned char, 2> zlibHeader { 0x78, 0x01 };
    std::array<unsigned char, 4> checksum {};
    putBigEndian(checksum.data(), static_cast<quint32>(adler));

    if (device.write(reinterpret_cast<const char*>(signature.data()), signature.size())
            != qsizetype(signature.size())
        || !writeChunk(device, "IHDR", header.data(), header.size())
        || !writeChunk(device, "IDAT", zlibHeader.data(), zlibHeader.size()))
        return false;
    for (const Band& band : bands) {
        if (!writeData(device, band.deflated))
            return false;
    }
    return writeChunk(device, "IDAT", checksum.data(), checksum.size())
        && writeChunk(device, "IEND", nullptr, 0);
}
