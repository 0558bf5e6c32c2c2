#include "CaptureDesktop.h"
#include "CaptureProcess.h"
#include "DesktopPattern.h"
#include "PatternWindow.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

// vexet-capture -D n on the virtual desktop, and everything it says when it cannot capture.
class TestCaptureScreen : public QObject {
    Q_OBJECT

    CaptureDesktop m_desktop;
    std::unique_ptr<PatternWindow> m_first;
    std::unique_ptr<PatternWindow> m_second;
    const QRect m_firstMonitor { 0, 0, 1920, 1080 };
    const QRect m_secondMonitor { 1920, 0, 1280, 1024 };
    const QString m_usage = u"Kullanım: vexet-capture [-x] [-t png|jpg] [-D N | -i -s | -i -w [-o]] DOSYA"_s;

    static QStringList entries(const QTemporaryDir& dir)
    {
        return QDir(dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    static QByteArray magic(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.read(8) : QByteArray();
    }

    static QProcessEnvironment environmentWithDisplay(const QString& display)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (display.isNull())
            environment.remove(u"DISPLAY"_s);
        else
            environment.insert(u"DISPLAY"_s, display);
        return environment;
    }

    // A failure is one Turkish line on standard error and no file at all.
    void checkFailure(
        const QStringList& arguments, const QProcessEnvironment& environment, const QString& expectedLine)
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        const CaptureProcess::Outcome outcome
            = CaptureProcess::run(arguments + QStringList { path }, environment);
        QVERIFY(outcome.exitCode != 0 && outcome.exitCode != 1 && outcome.exitCode != -1);
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(QString::fromUtf8(outcome.error), u"vexet-capture: "_s + expectedLine + u"\n"_s);
        QVERIFY(outcome.output.isEmpty());
        QVERIFY(entries(dir).isEmpty());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_desktop.isReady(), "needs the virtual desktop (X server with XTest)");
        QVERIFY(QFileInfo(CaptureProcess::binary()).isExecutable());
        // Each monitor covered with its part of the pattern, above everything else.
        m_first.reset(PatternWindow::cover(m_firstMonitor));
        m_second.reset(PatternWindow::cover(m_secondMonitor));
        m_first->show();
        m_second->show();
        QVERIFY(m_desktop.waitForPixels(m_firstMonitor, m_first->contents()));
        QVERIFY(m_desktop.waitForPixels(m_secondMonitor, m_second->contents()));
    }

    void eachMonitorGivesItsExactPixels_data()
    {
        QTest::addColumn<int>("display");
        QTest::addColumn<QRect>("monitor");
        QTest::newRow("1: the primary monitor") << 1 << m_firstMonitor;
        QTest::newRow("2") << 2 << m_secondMonitor;
    }

    void eachMonitorGivesItsExactPixels()
    {
        QFETCH(int, display);
        QFETCH(QRect, monitor);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        const CaptureProcess::Outcome outcome
            = CaptureProcess::run({ u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, QString::number(display), path });
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(outcome.error.isEmpty());
        QVERIFY(outcome.output.isEmpty());
        QCOMPARE(entries(dir), QStringList { u"capture.png"_s });
        QVERIFY(magic(path).startsWith("\x89PNG\r\n\x1a\n"));
        const QImage image = QImage(path).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), monitor.size());
        QVERIFY(image == DesktopPattern::of(monitor));
    }

    void withoutANumberTheMonitorUnderThePointer_data()
    {
        QTest::addColumn<QPoint>("pointer");
        QTest::addColumn<QRect>("monitor");
        QTest::newRow("on the second monitor") << m_secondMonitor.center() << m_secondMonitor;
        QTest::newRow("on the first monitor") << QPoint(1910, 1070) << m_firstMonitor;
    }

    void withoutANumberTheMonitorUnderThePointer()
    {
        QFETCH(QPoint, pointer);
        QFETCH(QRect, monitor);
        m_desktop.input().movePointer(pointer);
        QTRY_COMPARE(m_desktop.input().pointer(), pointer);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        const CaptureProcess::Outcome outcome = CaptureProcess::run({ u"-x"_s, u"-t"_s, u"png"_s, path });
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(outcome.error.isEmpty());
        const QImage image = QImage(path).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), monitor.size());
        QVERIFY(image == DesktopPattern::of(monitor));
    }

    void jpegWhenAsked()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.jpg"_s);
        const CaptureProcess::Outcome outcome
            = CaptureProcess::run({ u"-x"_s, u"-t"_s, u"jpg"_s, u"-D"_s, u"2"_s, path });
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(magic(path).startsWith("\xff\xd8\xff"));
        QCOMPARE(QImageReader(path).format(), QByteArray("jpeg"));
        const QImage image = QImage(path).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), m_secondMonitor.size());
        // Lossy, but the same picture: small differences on average.
        const QImage expected = DesktopPattern::of(m_secondMonitor);
        qint64 difference = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb a = image.pixel(x, y);
                const QRgb b = expected.pixel(x, y);
                difference
                    += qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
            }
        }
        const double perChannel = double(difference) / (3.0 * image.width() * image.height());
        QVERIFY2(perChannel < 4.0, qPrintable(QString::number(perChannel)));
        QCOMPARE(entries(dir), QStringList { u"capture.jpg"_s });
    }

    void replacesAnExistingFileWhole()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(50 * 1024 * 1024, 'x'));
        old.close();
        QCOMPARE(CaptureProcess::run({ u"-D"_s, u"1"_s, path }).exitCode, 0);
        QVERIFY(QImage(path).convertToFormat(QImage::Format_RGB32) == DesktopPattern::of(m_firstMonitor));
        QCOMPARE(entries(dir), QStringList { u"capture.png"_s });
    }

    void aMonitorThatDoesNotExist()
    {
        checkFailure({ u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"3"_s },
            QProcessEnvironment::systemEnvironment(), u"3 numaralı ekran yok; bu masaüstünde 2 ekran var."_s);
    }

    void aFailureLeavesAnOlderFileAlone()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"capture.png"_s);
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("before");
        old.close();
        QCOMPARE(CaptureProcess::run({ u"-D"_s, u"9"_s, path }).exitCode, 3);
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("before"));
        QCOMPARE(entries(dir), QStringList { u"capture.png"_s });
    }

    void aFileThatCannotBeWritten()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"no/such/folder/capture.png"_s);
        const CaptureProcess::Outcome outcome = CaptureProcess::run({ u"-D"_s, u"1"_s, path });
        QCOMPARE(outcome.exitCode, 4);
        const QString error = QString::fromUtf8(outcome.error);
        QVERIFY2(error.startsWith(u"vexet-capture: "_s + path + u" yazılamadı: "_s), qPrintable(error));
        QCOMPARE(error.count(u'\n'), 1);
        QVERIFY(entries(dir).isEmpty());
    }

    void noDisplay_data()
    {
        QTest::addColumn<QStringList>("mode");
        QTest::newRow("monitor") << QStringList { u"-D"_s, u"1"_s };
        QTest::newRow("region") << QStringList { u"-i"_s, u"-s"_s };
        QTest::newRow("window") << QStringList { u"-i"_s, u"-w"_s, u"-o"_s };
    }

    void noDisplay()
    {
        QFETCH(QStringList, mode);
        const QStringList arguments = QStringList { u"-x"_s, u"-t"_s, u"png"_s } + mode;
        checkFailure(arguments, environmentWithDisplay(QString()),
            u"X sunucusuna bağlanılamadı: DISPLAY tanımlı değil."_s);
        checkFailure(
            arguments, environmentWithDisplay(u":987"_s), u"X sunucusuna bağlanılamadı (DISPLAY=:987)."_s);
    }

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("nothing") << QStringList {} << u"Dosya adı verilmedi."_s;
        QTest::newRow("no file") << QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"1"_s }
                                 << u"Dosya adı verilmedi."_s;
        QTest::newRow("unknown option")
            << QStringList { u"-z"_s, u"-D"_s, u"1"_s, u"out.png"_s } << u"Bilinmeyen seçenek: -z"_s;
        QTest::newRow("unknown type") << QStringList { u"-t"_s, u"bmp"_s, u"-D"_s, u"1"_s, u"out.png"_s }
                                      << u"Bilinmeyen dosya türü: bmp (png ya da jpg olmalı)."_s;
        QTest::newRow("display 0") << QStringList { u"-D"_s, u"0"_s, u"out.png"_s }
                                   << u"Ekran numarası 1 ya da daha büyük bir tam sayı olmalı: 0"_s;
        QTest::newRow("-i alone") << QStringList { u"-i"_s, u"out.png"_s }
                                  << u"-i ile birlikte -s ya da -w gerekir."_s;
    }

    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        // Run where a wrongly written file would show.
        QTemporaryDir dir;
        const QString before = QDir::currentPath();
        QDir::setCurrent(dir.path());
        const CaptureProcess::Outcome outcome = CaptureProcess::run(arguments);
        QDir::setCurrent(before);
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY(outcome.output.isEmpty());
        QCOMPARE(QString::fromUtf8(outcome.error),
            u"vexet-capture: "_s + reason + u"\n"_s + m_usage
                + u"\nAyrıntılar için: vexet-capture --help\n"_s);
        QVERIFY(entries(dir).isEmpty());
    }

    void help()
    {
        for (const QString& option : { u"--help"_s, u"-h"_s }) {
            const CaptureProcess::Outcome outcome = CaptureProcess::run({ option });
            QCOMPARE(outcome.exitCode, 0);
            QVERIFY(outcome.error.isEmpty());
            const QString text = QString::fromUtf8(outcome.output);
            QVERIFY(text.startsWith(m_usage + u"\n\n"_s));
            QVERIFY(text.contains(u"Çıkış durumu:"_s));
        }
    }
};

QTEST_MAIN(TestCaptureScreen)
#include "tst_capture_screen.moc"
