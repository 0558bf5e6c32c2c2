#include "ImageFileWriter.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

// Every pixel tells where it is: red and green the low bits of x and y, blue their high bits,
// alpha a pattern of its own.
QImage coordinateImage(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgba(x & 0xff, y & 0xff, ((x >> 8) << 4) | (y >> 8), 255 - ((x + y) % 7)));
    }
    return image;
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

// A folder this process cannot create files in: a read-only temporary folder, or, when the process
// may write there anyway (it runs with privileges), the sysfs root, which refuses new files to all.
QString unwritableFolder(const QTemporaryDir& scratch)
{
    const QString folder = scratch.filePath(u"salt-okunur"_s);
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup);
    QFile probe(folder + u"/probe"_s);
    if (!probe.open(QIODevice::WriteOnly))
        return folder;
    probe.remove();
    return u"/sys"_s;
}

} // namespace

class TestImageFileWriter : public QObject {
    Q_OBJECT

    QTemporaryDir m_scratch;

private Q_SLOTS:
    void cleanupTestCase()
    {
        QFile::setPermissions(
            m_scratch.filePath(u"salt-okunur"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void pngKeepsEveryPixel()
    {
        const QImage image = coordinateImage(300, 260);
        const QString path = m_scratch.filePath(u"kayipsiz.png"_s);
        QVERIFY(!ImageFileWriter::write(image, path, ImageFormat::png));
        const QByteArray data = contents(path);
        QVERIFY(data.startsWith("\x89PNG\r\n\x1a\n"));
        QImage decoded;
        QVERIFY(decoded.loadFromData(data, "PNG"));
        QCOMPARE(decoded.convertToFormat(QImage::Format_ARGB32), image);
    }

    void jpegIsARealJpegOfTheSameSize()
    {
        QImage image(321, 123, QImage::Format_RGB32);
        image.fill(QColor(40, 120, 200));
        const QString path = m_scratch.filePath(u"foto.jpg"_s);
        QVERIFY(!ImageFileWriter::write(image, path, ImageFormat::jpeg));
        const QByteArray data = contents(path);
        QVERIFY(data.startsWith("\xff\xd8\xff"));
        QVERIFY(data.endsWith("\xff\xd9"));
        QImage decoded;
        QVERIFY(decoded.loadFromData(data, "JPEG"));
        QCOMPARE(decoded.size(), image.size());
        // Quality 95 keeps a flat colour within a step or two.
        const QColor centre = decoded.pixelColor(160, 60);
        QVERIFY2(
            qAbs(centre.red() - 40) <= 3 && qAbs(centre.green() - 120) <= 3 && qAbs(centre.blue() - 200) <= 3,
            qPrintable(centre.name()));
    }

    void jpegQualityIsNinetyFive()
    {
        // Detailed content shows the quality: the file equals the encoder's output at 95, and is
        // larger than at the default quality.
        const QImage image = coordinateImage(256, 256);
        const QByteArray ours = ImageFileWriter::encode(image, ImageFormat::jpeg);
        QByteArray reference;
        {
            QBuffer buffer(&reference);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(image.save(&buffer, "JPEG", 95));
        }
        QCOMPARE(ours, reference);
        QByteArray defaultQuality;
        {
            QBuffer buffer(&defaultQuality);
            buffer.open(QIODevice::WriteOnly);
            QVERIFY(image.save(&buffer, "JPEG"));
        }
        QVERIFY(ours.size() > defaultQuality.size());
    }

    void noBitmapIsAnEncodingFailure()
    {
        const QString path = m_scratch.filePath(u"bos.png"_s);
        const std::optional<ImageFileWriter::Failure> failure
            = ImageFileWriter::write(QImage(), path, ImageFormat::png);
        QVERIFY(failure);
        QCOMPARE(failure->kind, ImageFileWriter::Failure::encoding);
        QVERIFY(!QFile::exists(path));
        QVERIFY(ImageFileWriter::encode(QImage(), ImageFormat::jpeg).isEmpty());
    }

    void anImageJpegCannotHoldIsAnEncodingFailureThatLeavesTheOldFile()
    {
        // JPEG stops at 65500 pixels a side.
        QImage tooWide(70000, 1, QImage::Format_RGB32);
        tooWide.fill(Qt::red);
        const QString path = m_scratch.filePath(u"genis.jpg"_s);
        {
            QFile old(path);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write("eski");
        }
        QTest::ignoreMessage(QtWarningMsg, "Maximum supported image dimension is 65500 pixels");
        const std::optional<ImageFileWriter::Failure> failure
            = ImageFileWriter::write(tooWide, path, ImageFormat::jpeg);
        QVERIFY(failure);
        QCOMPARE(failure->kind, ImageFileWriter::Failure::encoding);
        QCOMPARE(contents(path), QByteArray("eski"));
        // PNG has no such limit.
        QVERIFY(!ImageFileWriter::write(tooWide, path, ImageFormat::png));
        QVERIFY(contents(path).startsWith("\x89PNG"));
    }

    void anUnwritableFolderGivesTheSystemsReason()
    {
        const QString path = unwritableFolder(m_scratch) + u"/Vexet.png"_s;
        QImage image(10, 10, QImage::Format_RGB32);
        image.fill(Qt::blue);
        const std::optional<ImageFileWriter::Failure> failure
            = ImageFileWriter::write(image, path, ImageFormat::png);
        QVERIFY(failure);
        QCOMPARE(failure->kind, ImageFileWriter::Failure::writing);
        QCOMPARE(failure->systemReason, u"Permission denied"_s);
        QVERIFY(!QFile::exists(path));
    }

    void aFileInPlaceOfAFolderGivesTheSystemsReason()
    {
        const QString notAFolder = m_scratch.filePath(u"dosya"_s);
        {
            QFile file(notAFolder);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QImage image(10, 10, QImage::Format_RGB32);
        image.fill(Qt::blue);
        const std::optional<ImageFileWriter::Failure> failure
            = ImageFileWriter::write(image, notAFolder + u"/Vexet.png"_s, ImageFormat::png);
        QVERIFY(failure);
        QCOMPARE(failure->kind, ImageFileWriter::Failure::writing);
        QCOMPARE(failure->systemReason, QString::fromLocal8Bit(std::strerror(ENOTDIR)));
    }

    void replacesAnExistingFileWholeAndLeavesNothingBehind()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"ayni.png"_s);
        QImage first(50, 40, QImage::Format_RGB32);
        first.fill(Qt::yellow);
        QVERIFY(!ImageFileWriter::write(first, path, ImageFormat::png));
        const QImage second = coordinateImage(20, 30);
        QVERIFY(!ImageFileWriter::write(second, path, ImageFormat::png));
        QImage decoded(path);
        QCOMPARE(decoded.convertToFormat(QImage::Format_ARGB32), second);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList { u"ayni.png"_s });
    }
};

QTEST_GUILESS_MAIN(TestImageFileWriter)
#include "tst_imagefilewriter.moc"
