#include "CaptureFileWriter.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// The file of a capture appears whole or not at all.
class TestCaptureFileWriter : public QObject {
    Q_OBJECT

    static QImage picture()
    {
        QImage image(320, 200, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(x & 0xff, y & 0xff, 128));
        }
        return image;
    }

    static QStringList entries(const QTemporaryDir& dir)
    {
        return QDir(dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

private Q_SLOTS:
    void writesPng()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        QString error;
        QVERIFY(CaptureFileWriter::write(picture(), path, CaptureRequest::Format::png, &error));
        QVERIFY(error.isEmpty());
        QCOMPARE(entries(dir), QStringList { u"capture.png"_s });
        QImageReader reader(path);
        QCOMPARE(reader.format(), QByteArray("png"));
        QCOMPARE(reader.read().convertToFormat(QImage::Format_RGB32), picture());
    }

    void writesJpegWhateverTheName()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        QVERIFY(CaptureFileWriter::write(picture(), path, CaptureRequest::Format::jpeg, nullptr));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.read(3) == QByteArray("\xff\xd8\xff"));
        QCOMPARE(QImageReader(path).size(), QSize(320, 200));
        QCOMPARE(entries(dir), QStringList { u"capture.png"_s });
    }

    void replacesAnOlderFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"a.png"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old contents");
        old.close();
        QVERIFY(CaptureFileWriter::write(picture(), path, CaptureRequest::Format::png, nullptr));
        QCOMPARE(QImage(path).convertToFormat(QImage::Format_RGB32), picture());
        QCOMPARE(entries(dir), QStringList { u"a.png"_s });
    }

    void aFailedWriteLeavesTheOldFileAndNoLeftovers()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"a.png"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old contents");
        old.close();
        QString error;
        QVERIFY(!CaptureFileWriter::write(QImage(), path, CaptureRequest::Format::png, &error));
        QVERIFY(error.startsWith(path + u" yazılamadı: "_s));
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("old contents"));
        QCOMPARE(entries(dir), QStringList { u"a.png"_s });
    }

    void namesTheFileItCannotWrite()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"missing/folder/a.png"_s);
        QString error;
        QVERIFY(!CaptureFileWriter::write(picture(), path, CaptureRequest::Format::png, &error));
        QVERIFY2(error.startsWith(path + u" yazılamadı: "_s), qPrintable(error));
        QVERIFY(!error.contains(u'\n'));
        QVERIFY(entries(dir).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCaptureFileWriter)
#include "tst_capture_filewriter.moc"
