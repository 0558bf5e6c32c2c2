#include "CaptureArguments.h"
#include "CaptureToolProtocol.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(CaptureRequest::Mode)
Q_DECLARE_METATYPE(CaptureRequest::Format)

// The command line as the capture service writes it, and as a person may.
class TestCaptureArguments : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void acceptsWhatTheCaptureServicePasses_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<CaptureRequest::Mode>("mode");
        QTest::addColumn<int>("display"); // 0: none given, the monitor under the pointer
        QTest::addColumn<CaptureRequest::Format>("format");
        QTest::addColumn<QString>("path");

        const QString file = u"/run/user/1000/Vexet-1/capture.png"_s;
        QTest::newRow("region") << QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-s"_s, file }
                                << CaptureRequest::Mode::region << 0 << CaptureRequest::Format::png << file;
        QTest::newRow("window") << QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-w"_s, u"-o"_s, file }
                                << CaptureRequest::Mode::window << 0 << CaptureRequest::Format::png << file;
        QTest::newRow("screen 2") << QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"2"_s, file }
                                  << CaptureRequest::Mode::screen << 2 << CaptureRequest::Format::png << file;
        QTest::newRow("screen 12, jpg")
            << QStringList { u"-t"_s, u"jpg"_s, u"-D"_s, u"12"_s, u"a.jpg"_s } << CaptureRequest::Mode::screen
            << 12 << CaptureRequest::Format::jpeg << u"a.jpg"_s;
        QTest::newRow("JPEG spelled out")
            << QStringList { u"-t"_s, u"JPEG"_s, u"-i"_s, u"-s"_s, u"b"_s } << CaptureRequest::Mode::region
            << 0 << CaptureRequest::Format::jpeg << u"b"_s;
        QTest::newRow("png by default")
            << QStringList { u"-D"_s, u"1"_s, u"c.png"_s } << CaptureRequest::Mode::screen << 1
            << CaptureRequest::Format::png << u"c.png"_s;
        QTest::newRow("file first") << QStringList { u"c.png"_s, u"-i"_s, u"-w"_s }
                                    << CaptureRequest::Mode::window << 0 << CaptureRequest::Format::png
                                    << u"c.png"_s;
        QTest::newRow("a file named like an option")
            << QStringList { u"-i"_s, u"-s"_s, u"--"_s, u"-s"_s } << CaptureRequest::Mode::region << 0
            << CaptureRequest::Format::png << u"-s"_s;
        QTest::newRow("a file named -")
            << QStringList { u"-D"_s, u"1"_s, u"-"_s } << CaptureRequest::Mode::screen << 1
            << CaptureRequest::Format::png << u"-"_s;
        QTest::newRow("the monitor under the pointer")
            << QStringList { u"-x"_s, u"-t"_s, u"png"_s, file } << CaptureRequest::Mode::screen << 0
            << CaptureRequest::Format::png << file;
        QTest::newRow("only a file") << QStringList { u"d.png"_s } << CaptureRequest::Mode::screen << 0
                                     << CaptureRequest::Format::png << u"d.png"_s;
    }

    void acceptsWhatTheCaptureServicePasses()
    {
        QFETCH(QStringList, arguments);
        const CaptureArguments parsed = CaptureArguments::parse(arguments);
        QCOMPARE(parsed.outcome(), CaptureArguments::Outcome::capture);
        QVERIFY(parsed.error().isEmpty());
        QTEST(parsed.request().mode, "mode");
        QTEST(parsed.request().display.value_or(0), "display");
        QTEST(parsed.request().format, "format");
        QTEST(parsed.request().path, "path");
    }

    void refusesWrongOrMissingArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");

        QTest::newRow("nothing") << QStringList {} << u"Dosya adı verilmedi."_s;
        QTest::newRow("no file") << QStringList { u"-x"_s, u"-i"_s, u"-s"_s } << u"Dosya adı verilmedi."_s;
        QTest::newRow("two files") << QStringList { u"-D"_s, u"1"_s, u"a"_s, u"b"_s }
                                   << u"Birden çok dosya adı verildi: a, b"_s;
        QTest::newRow("empty file") << QStringList { u"-D"_s, u"1"_s, u""_s } << u"Dosya adı boş olamaz."_s;
        QTest::newRow("unknown option")
            << QStringList { u"-q"_s, u"-D"_s, u"1"_s, u"a"_s } << u"Bilinmeyen seçenek: -q"_s;
        QTest::newRow("options run together")
            << QStringList { u"-is"_s, u"a"_s } << u"Bilinmeyen seçenek: -is"_s;
        QTest::newRow("unknown type") << QStringList { u"-t"_s, u"gif"_s, u"-D"_s, u"1"_s, u"a"_s }
                                      << u"Bilinmeyen dosya türü: gif (png ya da jpg olmalı)."_s;
        QTest::newRow("type missing") << QStringList { u"-D"_s, u"1"_s, u"a"_s, u"-t"_s }
                                      << u"-t seçeneği bir dosya türü ister: png ya da jpg."_s;
        QTest::newRow("display missing")
            << QStringList { u"a"_s, u"-D"_s } << u"-D seçeneği bir ekran numarası ister."_s;
        QTest::newRow("display 0") << QStringList { u"-D"_s, u"0"_s, u"a"_s }
                                   << u"Ekran numarası 1 ya da daha büyük bir tam sayı olmalı: 0"_s;
        QTest::newRow("display negative") << QStringList { u"-D"_s, u"-1"_s, u"a"_s }
                                          << u"Ekran numarası 1 ya da daha büyük bir tam sayı olmalı: -1"_s;
        QTest::newRow("display not a number") << QStringList { u"-D"_s, u"iki"_s,
            u"a"_s } << u"Ekran numarası 1 ya da daha büyük bir tam sayı olmalı: iki"_s;
        QTest::newRow("display with a sign") << QStringList { u"-D"_s, u"+2"_s,
            u"a"_s } << u"Ekran numarası 1 ya da daha büyük bir tam sayı olmalı: +2"_s;
        QTest::newRow("display and interactive") << QStringList { u"-i"_s, u"-s"_s, u"-D"_s, u"1"_s, u"a"_s }
                                                 << u"-D ile -i birlikte kullanılamaz."_s;
        QTest::newRow("interactive alone")
            << QStringList { u"-i"_s, u"a"_s } << u"-i ile birlikte -s ya da -w gerekir."_s;
        QTest::newRow("selection and window")
            << QStringList { u"-i"_s, u"-s"_s, u"-w"_s, u"a"_s } << u"-s ile -w birlikte kullanılamaz."_s;
        QTest::newRow("selection without -i")
            << QStringList { u"-s"_s, u"a"_s } << u"-s ve -w yalnızca -i ile kullanılır."_s;
        QTest::newRow("window without -i")
            << QStringList { u"-w"_s, u"a"_s } << u"-s ve -w yalnızca -i ile kullanılır."_s;
        QTest::newRow("no shadow in region mode") << QStringList { u"-i"_s, u"-s"_s, u"-o"_s, u"a"_s }
                                                  << u"-o yalnızca pencere modunda (-i -w) kullanılır."_s;
        QTest::newRow("no shadow for a monitor") << QStringList { u"-D"_s, u"1"_s, u"-o"_s, u"a"_s }
                                                 << u"-o yalnızca pencere modunda (-i -w) kullanılır."_s;
    }

    void refusesWrongOrMissingArguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        const CaptureArguments parsed = CaptureArguments::parse(arguments);
        QCOMPARE(parsed.outcome(), CaptureArguments::Outcome::usageError);
        QCOMPARE(parsed.error(), reason);
        QCOMPARE(parsed.usageErrorText(),
            u"vexet-capture: "_s + reason
                + u"\nKullanım: vexet-capture [-x] [-t png|jpg] [-D N | -i -s | -i -w [-o]] DOSYA\n"
                  "Ayrıntılar için: vexet-capture --help\n"_s);
    }

    void helpWinsWhereverItStands()
    {
        for (const QStringList& arguments : { QStringList { u"--help"_s }, QStringList { u"-h"_s },
                 QStringList { u"-D"_s, u"1"_s, u"a"_s, u"--help"_s }, QStringList { u"-q"_s, u"-h"_s } }) {
            const CaptureArguments parsed = CaptureArguments::parse(arguments);
            QCOMPARE(parsed.outcome(), CaptureArguments::Outcome::help);
        }
        // After "--" it is a file name.
        const CaptureArguments file = CaptureArguments::parse({ u"-D"_s, u"1"_s, u"--"_s, u"--help"_s });
        QCOMPARE(file.outcome(), CaptureArguments::Outcome::capture);
        QCOMPARE(file.request().path, u"--help"_s);
    }

    void theProgramsArgumentsAreUnderstoodForEveryMode()
    {
        const QString file = u"/run/user/1000/Vexet-2/capture.png"_s;
        const struct {
            CaptureMode mode;
            std::optional<int> display;
            CaptureRequest::Mode expected;
        } cases[] = {
            { CaptureMode::region, std::nullopt, CaptureRequest::Mode::region },
            { CaptureMode::window, std::nullopt, CaptureRequest::Mode::window },
            { CaptureMode::screen, 2, CaptureRequest::Mode::screen },
            { CaptureMode::screen, std::nullopt, CaptureRequest::Mode::screen },
        };
        for (const auto& item : cases) {
            const QStringList arguments = CaptureToolProtocol::arguments(item.mode, item.display, file);
            QCOMPARE(arguments.mid(0, 3), (QStringList { u"-x"_s, u"-t"_s, u"png"_s }));
            QCOMPARE(arguments.last(), file);
            const CaptureArguments parsed = CaptureArguments::parse(arguments);
            QCOMPARE(parsed.outcome(), CaptureArguments::Outcome::capture);
            QCOMPARE(parsed.request().mode, item.expected);
            QCOMPARE(parsed.request().display, item.display);
            QCOMPARE(parsed.request().format, CaptureRequest::Format::png);
            QCOMPARE(parsed.request().path, file);
        }
        QCOMPARE(CaptureToolProtocol::arguments(CaptureMode::window, std::nullopt, file),
            (QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-w"_s, u"-o"_s, file }));
    }

    void helpExplainsEveryOptionAndStatus()
    {
        const QString help = CaptureArguments::help();
        QVERIFY(help.startsWith(CaptureArguments::usage() + u"\n"_s));
        for (const QString& option : { u"  -D N "_s, u"  -i -s "_s, u"  -i -w "_s, u"  -o "_s,
                 u"  -t png|jpg "_s, u"  -x "_s, u"  -h, --help "_s })
            QVERIFY2(help.contains(option), qPrintable(option));
        for (const QString& status :
            { u"\n  0  "_s, u"\n  1  "_s, u"\n  2  "_s, u"\n  3  "_s, u"\n  4  "_s, u"\n  5  "_s })
            QVERIFY2(help.contains(status), qPrintable(status));
        QVERIFY(help.contains(u"Esc ya da sağ tık yakalamayı iptal eder."_s));
        QVERIFY(help.endsWith(u'\n'));
        const QStringList lines = help.split(u'\n');
        for (const QString& line : lines)
            QVERIFY2(line.size() <= 80, qPrintable(line));
    }
};

QTEST_GUILESS_MAIN(TestCaptureArguments)
#include "tst_capture_arguments.moc"
