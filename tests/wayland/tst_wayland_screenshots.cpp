#include "PatternDesktop.h"
#include "PrivatePortal.h"
#include "RegionSelectionLook.h"
#include "WaylandInput.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

// vexet-capture on the Wayland test desktop, through the real Screenshot portal: known pictures on
// both outputs, the pointer and keys through the desktop's own input, every picture compared pixel
// for pixel with what was shown.
class TestWaylandScreenshots : public QObject {
    Q_OBJECT

    static constexpr int timeoutMs = 30000;
    // Around the pointer, which the compositor draws into its pictures.

    struct Outcome {
        int exitCode = -1;
        QByteArray error;
    };

    PatternDesktop m_patterns;
    SwayIpc& m_sway = m_patterns.sway();
    WaylandInput m_input;
    QTemporaryDir m_dir;

    static QString helper() { return qEnvironmentVariable("VEXET_BINARY_DIR") + u"/src/app/vexet-capture"_s; }
    static QRect firstRect() { return QGuiApplication::screens().at(0)->geometry(); }
    static QRect secondRect() { return QGuiApplication::screens().at(1)->geometry(); }

    Outcome run(const QStringList& arguments, const QProcessEnvironment& environment = {})
    {
        QProcess process;
        if (!environment.isEmpty())
            process.setProcessEnvironment(environment);
        process.start(helper(), arguments);
        Outcome outcome;
        if (process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit)
            outcome.exitCode = process.exitCode();
        outcome.error = process.readAllStandardError();
        return outcome;
    }

    // Starts the helper without waiting: for the interactive modes.
    std::unique_ptr<QProcess> start(const QStringList& arguments)
    {
        auto process = std::make_unique<QProcess>();
        process->start(helper(), arguments);
        return process->waitForStarted(timeoutMs) ? std::move(process) : nullptr;
    }

    // The helper's overlay is on screen: the monitor shows its frozen picture dimmed, as the overlay
    // draws it (input sent before it is drawn would reach nothing). The pointer is elsewhere.
    bool waitForOverlay(int monitor)
    {
        QImage dimmed = m_patterns.expected(monitor);
        QPainter painter(&dimmed);
        painter.fillRect(dimmed.rect(), QColor(0, 0, 0, RegionSelectionLook::screenshot().dimming));
        painter.end();
        const QString output = monitor == 0 ? u"HEADLESS-1"_s : u"HEADLESS-2"_s;
        return QTest::qWaitFor([&] { return m_patterns.pictures().output(output) == dimmed; }, timeoutMs);
    }

    static int finish(QProcess& process)
    {
        return process.waitForFinished(timeoutMs) && process.exitStatus() == QProcess::NormalExit
            ? process.exitCode()
            : -1;
    }

    QImage written(const QString& path) const { return QImage(path).convertToFormat(QImage::Format_RGB32); }

    // Nothing of a screenshot may stay on disk but the file asked for.
    void checkNothingLeft()
    {
        QVERIFY(!QFile::exists(u"/tmp/out.png"_s) || QFileInfo(u"/tmp/out.png"_s).ownerId() != ::getuid());
        const QDir pictures(QDir::home().filePath(u"Pictures"_s));
        QVERIFY2(pictures.entryList(QDir::Files | QDir::NoDotAndDotDot).isEmpty(),
            qPrintable(pictures.entryList().join(u' ')));
        QVERIFY(QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).entryList({ u"Vexet-*"_s }).isEmpty());
    }

    // The share of pixels whose channels all lie within 8 levels of the expected ones.
    static double closeShare(const QImage& actual, const QImage& expected)
    {
        qint64 close = 0;
        for (int y = 0; y < expected.height(); ++y) {
            for (int x = 0; x < expected.width(); ++x) {
                const QRgb a = actual.pixel(x, y);
                const QRgb e = expected.pixel(x, y);
                close += qAbs(qRed(a) - qRed(e)) <= 8 && qAbs(qGreen(a) - qGreen(e)) <= 8
                        && qAbs(qBlue(a) - qBlue(e)) <= 8
                    ? 1
                    : 0;
            }
        }
        return double(close) / (qint64(expected.width()) * expected.height());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsEmpty("DISPLAY"), "the Wayland tests run without any X server");
        QVERIFY2(m_input.isReady(), qPrintable(m_input.errorString()));
        QCOMPARE(QGuiApplication::platformName(), u"wayland"_s);
        QCOMPARE(QGuiApplication::screens().size(), 2);
        QVERIFY(m_sway.restoreOutputScales());
        QVERIFY(m_patterns.show());
    }

    void cleanupTestCase() { m_sway.restoreOutputScales(); }

    void cleanup()
    {
        checkNothingLeft();
        // A test that failed half-way leaves no scale behind for the next one.
        if (QGuiApplication::screens().at(1)->devicePixelRatio() != 1.0) {
            QVERIFY(m_sway.restoreOutputScales());
            QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().at(1)->devicePixelRatio(), 1.0, timeoutMs);
            m_patterns.renew();
        }
    }

    void init() { QVERIFY(m_patterns.show()); }

    void eachMonitorGivesItsExactPixels()
    {
        const QString path = m_dir.filePath(u"monitor.png"_s);
        m_sway.parkPointer(secondRect().center());
        Outcome outcome = run({ u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"1"_s, path });
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(outcome.error.isEmpty());
        QCOMPARE(written(path), m_patterns.expected(0));

        m_sway.parkPointer(firstRect().center());
        outcome = run({ u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"2"_s, path });
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(written(path), m_patterns.expected(1));

        outcome = run({ u"-D"_s, u"3"_s, path });
        QCOMPARE(outcome.exitCode, 3);
        QCOMPARE(outcome.error, "vexet-capture: 3 numaralı ekran yok; bu masaüstünde 2 ekran var.\n"_ba);
    }

    void withoutANumberTheMonitorUnderThePointer()
    {
        const QString path = m_dir.filePath(u"pointer.png"_s);
        const QPoint pointer = secondRect().topLeft() + QPoint(300, 700);
        m_sway.parkPointer(pointer);
        QCOMPARE(run({ u"-x"_s, u"-t"_s, u"png"_s, path }).exitCode, 0);
        const QImage image = written(path);
        QCOMPARE(image.size(), QSize(1280, 1024));
        QVERIFY(PatternDesktop::equalBesidesPointer(image, m_patterns.expected(1), QPoint(300, 700)));
    }

    void anAreaDraggedOnEitherMonitorGivesThosePixels_data()
    {
        QTest::addColumn<int>("monitor");
        QTest::newRow("first monitor") << 0;
        QTest::newRow("second monitor") << 1;
    }

    void anAreaDraggedOnEitherMonitorGivesThosePixels()
    {
        QFETCH(int, monitor);
        const QRect place = QGuiApplication::screens().at(monitor)->geometry();
        const QString path = m_dir.filePath(u"area.png"_s);
        // Frozen with the pointer on the other monitor, out of the picture.
        m_sway.parkPointer((monitor == 0 ? secondRect() : firstRect()).center());
        const auto process = start({ u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-s"_s, path });
        QVERIFY(process);
        QVERIFY(waitForOverlay(monitor));
        QVERIFY(m_input.drag(place.topLeft() + QPoint(300, 200), place.topLeft() + QPoint(701, 517)));
        QCOMPARE(finish(*process), 0);
        QCOMPARE(written(path), m_patterns.expected(monitor).copy(300, 200, 401, 317));
    }

    void escapeOrTheRightButtonCancelsAnArea()
    {
        const QString path = m_dir.filePath(u"cancelled.png"_s);
        for (const bool escape : { true, false }) {
            m_sway.parkPointer(secondRect().center());
            const auto process = start({ u"-i"_s, u"-s"_s, path });
            QVERIFY(process);
            QVERIFY(waitForOverlay(0)); // the pointer is on the second monitor
            if (escape) {
                QVERIFY(m_input.move(secondRect().center()));
                QVERIFY(m_input.keyClick(WaylandInput::Escape));
            } else {
                QVERIFY(m_input.rightClick(firstRect().center()));
            }
            QCOMPARE(finish(*process), 1);
            QVERIFY(!QFile::exists(path));
            QVERIFY(m_patterns.show());
        }
    }

    void onAMonitorOfScale2ThePixelsAreStillExact()
    {
        QVERIFY(m_sway.setOutputScale(u"HEADLESS-2"_s, 2));
        QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().at(1)->devicePixelRatio(), 2.0, timeoutMs);
        m_patterns.renew();
        QCOMPARE(m_patterns.expected(1).size(), QSize(1280, 1024));
        QVERIFY(m_patterns.show());

        const QString path = m_dir.filePath(u"scaled.png"_s);
        m_sway.parkPointer(firstRect().center());
        QCOMPARE(run({ u"-D"_s, u"2"_s, path }).exitCode, 0);
        QCOMPARE(written(path), m_patterns.expected(1));

        // An area of it: points are two pixels each way, and every pixel is the monitor's own.
        const QString area = m_dir.filePath(u"scaled-area.png"_s);
        const auto process = start({ u"-i"_s, u"-s"_s, area });
        QVERIFY(process);
        QVERIFY(waitForOverlay(1));
        QVERIFY(m_input.drag(
            secondRect().topLeft() + QPoint(100, 50), secondRect().topLeft() + QPoint(333, 250)));
        QCOMPARE(finish(*process), 0);
        QCOMPARE(written(area), m_patterns.expected(1).copy(200, 100, 466, 400));
        QVERIFY(m_patterns.show());

        // The monitor of scale 1 comes out at its own size; the portal's picture enlarged it with a
        // filter, so its pixels are close to what was shown, not exact (see DesktopPicture).
        m_sway.parkPointer(secondRect().center());
        QCOMPARE(run({ u"-D"_s, u"1"_s, path }).exitCode, 0);
        const QImage first = written(path);
        QCOMPARE(first.size(), QSize(1920, 1080));
        const double close = closeShare(first, m_patterns.expected(0));
        qInfo("scale-1 monitor beside a scale-2 one: %.1f %% of its pixels within 8 levels", 100 * close);
        QVERIFY(close > 0.5);
        QVERIFY(m_sway.restoreOutputScales());
        QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().at(1)->devicePixelRatio(), 1.0, timeoutMs);
        m_patterns.renew();
    }

    void aWindowIsWhatTheDesktopsPickerChose()
    {
        // On sway the desktop's picker (slurp) chooses an area; here the second monitor.
        QFile answer(qEnvironmentVariable("VEXET_SLURP_ANSWER"));
        QVERIFY(answer.open(QIODevice::WriteOnly | QIODevice::Truncate));
        answer.write("1920,0 1280x1024\n");
        answer.close();
        m_sway.parkPointer(firstRect().center());
        const QString path = m_dir.filePath(u"window.png"_s);
        QCOMPARE(run({ u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-w"_s, u"-o"_s, path }).exitCode, 0);
        QCOMPARE(written(path), m_patterns.expected(1));

        // sway's portal reports a picker closed by the user as a failure, not as a cancel.
        QVERIFY(answer.open(QIODevice::WriteOnly | QIODevice::Truncate));
        answer.write("cancel\n");
        answer.close();
        const QString none = m_dir.filePath(u"closed.png"_s);
        const Outcome closed = run({ u"-i"_s, u"-w"_s, none });
        QCOMPARE(closed.exitCode, 3);
        QVERIFY(closed.error.startsWith("vexet-capture: "));
        QVERIFY(!QFile::exists(none));
    }

    void aDesktopThatRefusesIsARefusalAndAClosedPickerACancel()
    {
        PrivatePortal portal(1);
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, portal.busAddress());
        const QString path = m_dir.filePath(u"refused.png"_s);

        const Outcome refused = run({ u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"1"_s, path }, environment);
        QCOMPARE(refused.exitCode, 5);
        QCOMPARE(refused.error, "vexet-capture: Masaüstü ekran resmi almaya izin vermedi.\n"_ba);
        QCOMPARE(run({ u"-i"_s, u"-s"_s, path }, environment).exitCode, 5);
        const Outcome cancelled = run({ u"-i"_s, u"-w"_s, path }, environment);
        QCOMPARE(cancelled.exitCode, 1);
        QVERIFY(cancelled.error.isEmpty());
        QVERIFY(!QFile::exists(path));
    }

    void withoutAPortalItSaysSo()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + m_dir.filePath(u"no-bus"_s));
        const Outcome outcome = run({ u"-D"_s, u"1"_s, m_dir.filePath(u"none.png"_s) }, environment);
        QCOMPARE(outcome.exitCode, 3);
        QVERIFY(outcome.error.startsWith("vexet-capture: "));
    }
};

QTEST_MAIN(TestWaylandScreenshots)
#include "tst_wayland_screenshots.moc"
