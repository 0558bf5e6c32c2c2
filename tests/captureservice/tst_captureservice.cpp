#include "AlertCatcher.h"
#include "Beeper.h"
#include "CaptureService.h"
#include "CaptureToolProtocol.h"
#include "DesktopTexts.h"
#include "ScreenCapturePermission.h"
#include "X11Input.h"
#include "X11PointerScreen.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

class FakePermission : public ScreenCapturePermission {
public:
    bool preflight() override { return granted; }
    void request() override { ++requests; }
    bool canOpenSettings() const override { return hasSettings; }
    bool openSettings() override
    {
        ++settingsOpened;
        return true;
    }
    bool granted = true;
    bool hasSettings = true;
    int requests = 0;
    int settingsOpened = 0;
};

// A desktop where only the helper can tell which monitor the pointer is on (Wayland).
class UnknownPointerScreen : public PointerScreen {
public:
    std::optional<int> displayNumberUnderPointer() const override { return std::nullopt; }
};

} // namespace

class TestCaptureService : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_log;
    QString m_image;
    FakePermission m_permission;
    X11PointerScreen m_pointer;

    std::unique_ptr<CaptureService> service(const PointerScreen* pointer = nullptr)
    {
        auto result = std::make_unique<CaptureService>(m_permission, pointer ? *pointer : m_pointer,
            qEnvironmentVariable("VEXET_SOURCE_DIR") + u"/tests/captureservice/fake-capture.sh"_s);
        result->setTemporaryRoot(m_dir.filePath(u"runtime"_s));
        return result;
    }

    QStringList logLines() const
    {
        QFile file(m_log);
        return file.open(QIODevice::ReadOnly)
            ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
            : QStringList();
    }

    QStringList leftoverFolders() const
    {
        return QDir(m_dir.filePath(u"runtime"_s))
            .entryList({ u"Vexet-*"_s }, QDir::AllEntries | QDir::Hidden);
    }

    // Runs a capture to its end; returns the results delivered (normally exactly one).
    QList<CaptureResult> run(CaptureService& capture, CaptureMode mode, const QString& behaviour)
    {
        qputenv("FAKE_CAPTURE", behaviour.toUtf8());
        QList<CaptureResult> results;
        capture.capture(mode, [&results](CaptureResult result) { results.append(std::move(result)); });
        if (!QTest::qWaitFor([&] { return !results.isEmpty(); }, 20000))
            qWarning("the capture never finished");
        QTest::qWait(50); // a second delivery would show up here
        return results;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(m_dir.filePath(u"runtime"_s)));
        m_log = m_dir.filePath(u"calls.log"_s);
        m_image = m_dir.filePath(u"known.png"_s);
        QImage known(37, 23, QImage::Format_RGB32);
        for (int y = 0; y < known.height(); ++y)
            for (int x = 0; x < known.width(); ++x)
                known.setPixel(x, y, qRgb(x * 6, y * 11, 200));
        QVERIFY(known.save(m_image));
        qputenv("FAKE_CAPTURE_LOG", m_log.toUtf8());
        qputenv("FAKE_CAPTURE_IMAGE", m_image.toUtf8());
    }

    void init()
    {
        QFile::remove(m_log);
        m_permission = FakePermission();
    }

    void argumentsFollowTheHelpersOrder()
    {
        QCOMPARE(CaptureToolProtocol::arguments(CaptureMode::region, 1, u"/t/capture.png"_s),
            (QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-s"_s, u"/t/capture.png"_s }));
        QCOMPARE(CaptureToolProtocol::arguments(CaptureMode::window, 1, u"/t/capture.png"_s),
            (QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-w"_s, u"-o"_s, u"/t/capture.png"_s }));
        QCOMPARE(CaptureToolProtocol::arguments(CaptureMode::screen, 2, u"/t/capture.png"_s),
            (QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"-D"_s, u"2"_s, u"/t/capture.png"_s }));
        QCOMPARE(CaptureToolProtocol::arguments(CaptureMode::screen, std::nullopt, u"/t/capture.png"_s),
            (QStringList { u"-x"_s, u"-t"_s, u"png"_s, u"/t/capture.png"_s }));
    }

    void withoutAKnownMonitorTheHelperTakesTheOneUnderThePointer()
    {
        const UnknownPointerScreen unknown;
        auto capture = service(&unknown);
        const QList<CaptureResult> results = run(*capture, CaptureMode::screen, u"image"_s);
        QCOMPARE(results.size(), 1);
        QVERIFY(results[0].ok());
        QCOMPARE(logLines().mid(0, 3), (QStringList { u"arg -x"_s, u"arg -t"_s, u"arg png"_s }));
        QVERIFY(logLines().at(3).endsWith(u"/capture.png"_s));
    }

    void theDisplayNumberFollowsThePointer()
    {
        const QList<QScreen*> screens = QGuiApplication::screens();
        QCOMPARE(screens.size(), 2);
        X11Connection connection;
        X11Input input(connection);
        input.movePointer(screens[1]->geometry().center());
        QTRY_COMPARE(m_pointer.displayNumberUnderPointer(), 2);
        input.movePointer(screens[0]->geometry().center());
        QTRY_COMPARE(m_pointer.displayNumberUnderPointer(), 1);
        // Below the shorter second monitor: on no screen at all.
        input.movePointer(QPoint(screens[1]->geometry().left() + 10, screens[1]->geometry().bottom() + 20));
        QTRY_VERIFY(!screens[1]->geometry().contains(QCursor::pos()));
        QCOMPARE(m_pointer.displayNumberUnderPointer(), 1);
    }

    void aScreenCaptureDeliversTheImageAndCleansUp()
    {
        auto capture = service();
        const QList<CaptureResult> results = run(*capture, CaptureMode::screen, u"image"_s);
        QCOMPARE(results.size(), 1);
        QVERIFY(results[0].ok());
        QVERIFY(results[0].value().has_value());
        QCOMPARE(results[0].value()->convertToFormat(QImage::Format_RGB32),
            QImage(m_image).convertToFormat(QImage::Format_RGB32));
        QVERIFY(!capture->isBusy());
        QCOMPARE(capture->process(), nullptr);
        QVERIFY(leftoverFolders().isEmpty());

        const QStringList log = logLines();
        QCOMPARE(log.mid(0, 5),
            (QStringList { u"arg -x"_s, u"arg -t"_s, u"arg png"_s, u"arg -D"_s,
                u"arg "_s + QString::number(*m_pointer.displayNumberUnderPointer()) }));
        QVERIFY(QRegularExpression(u"^arg .*/runtime/Vexet-[0-9A-F-]{36}/capture\\.png$"_s)
                    .match(log[5])
                    .hasMatch());
        QVERIFY(log.contains(u"folder 700"_s));
        QVERIFY(log.contains(u"file 600"_s));
    }

    void cancellingASelectionIsASuccessWithoutImage()
    {
        auto capture = service();
        for (CaptureMode mode : { CaptureMode::region, CaptureMode::window }) {
            const QList<CaptureResult> results = run(*capture, mode, u"cancel"_s);
            QCOMPARE(results.size(), 1);
            QVERIFY(results[0].ok());
            QVERIFY(!results[0].value().has_value());
            QVERIFY(leftoverFolders().isEmpty());
        }
    }

    // The helper's status tells a cancel from a failure: a failure is one in every mode.
    void aHelperFailureOrCrashIsAFailureInEveryMode()
    {
        auto capture = service();
        for (CaptureMode mode : { CaptureMode::region, CaptureMode::window, CaptureMode::screen }) {
            for (const int status :
                { int(CaptureExitStatus::displayFailure), int(CaptureExitStatus::writeFailure) }) {
                qputenv("FAKE_CAPTURE_STATUS", QByteArray::number(status));
                const QList<CaptureResult> results = run(*capture, mode, u"fail"_s);
                QCOMPARE(results.size(), 1);
                QVERIFY(!results[0].ok());
                QCOMPARE(results[0].error().code(), status);
                QCOMPARE(results[0].error().localizedDescription(),
                    u"Ekran resmi alınamadı. Ekran kaydı iznini kontrol et ve Vexet’i yeniden aç."_s);
            }
            qunsetenv("FAKE_CAPTURE_STATUS");
            const QList<CaptureResult> crashed = run(*capture, mode, u"crash"_s);
            QCOMPARE(crashed.size(), 1);
            QVERIFY(!crashed[0].ok());
            QCOMPARE(crashed[0].error().code(), CaptureService::crashed);
            QVERIFY(leftoverFolders().isEmpty());
        }
    }

    void aDesktopThatRefusesShowsThePermissionAlertOnce()
    {
        auto capture = service();
        for (const bool hasSettings : { true, false }) {
            m_permission.hasSettings = hasSettings;
            AlertCatcher alerts(hasSettings ? 1 : 0); // "Daha sonra"
            qputenv("FAKE_CAPTURE_STATUS", QByteArray::number(int(CaptureExitStatus::refused)));
            const QList<CaptureResult> results = run(*capture, CaptureMode::screen, u"fail"_s);
            qunsetenv("FAKE_CAPTURE_STATUS");
            QCOMPARE(results.size(), 1);
            QVERIFY(results[0].ok()); // nothing more to report than the alert
            QVERIFY(!results[0].value().has_value());
            const QStringList buttons = hasSettings ? QStringList { u"Ayarları aç"_s, u"Daha sonra"_s }
                                                    : QStringList { u"Daha sonra"_s };
            QCOMPARE(alerts.alerts(),
                (QList<QStringList> { QStringList { u"Vexet"_s, u"Ekran kaydı izni gerekli"_s,
                                          DesktopTexts::screenshotPermission() }
                    + buttons }));
            QCOMPARE(m_permission.settingsOpened, 0);
        }
        QVERIFY(leftoverFolders().isEmpty());
    }

    void aScreenCaptureWithoutImageIsAnErrorCarryingTheExitStatus()
    {
        auto capture = service();
        qputenv("FAKE_CAPTURE_STATUS", "7");
        QList<CaptureResult> results = run(*capture, CaptureMode::screen, u"fail"_s);
        qunsetenv("FAKE_CAPTURE_STATUS");
        QCOMPARE(results.size(), 1);
        QVERIFY(!results[0].ok());
        QCOMPARE(results[0].error().domain(), u"Vexet"_s);
        QCOMPARE(results[0].error().code(), 7);
        QCOMPARE(results[0].error().localizedDescription(),
            u"Ekran resmi alınamadı. Ekran kaydı iznini kontrol et ve Vexet’i yeniden aç."_s);

        // A file that is no picture is no image either; the status is then 0.
        results = run(*capture, CaptureMode::screen, u"garbage"_s);
        QCOMPARE(results.size(), 1);
        QCOMPARE(results[0].error().code(), 0);
        QVERIFY(leftoverFolders().isEmpty());
    }

    void aSecondRequestWhileBusyOnlyBeeps()
    {
        auto capture = service();
        qputenv("FAKE_CAPTURE", "image");
        int first = 0;
        int second = 0;
        capture->capture(CaptureMode::screen, [&first](const CaptureResult&) { ++first; });
        QVERIFY(capture->isBusy());
        QCOMPARE(capture->process(), nullptr); // the helper starts only after the windows are gone
        const int beeps = Beeper::count();
        capture->capture(CaptureMode::region, [&second](const CaptureResult&) { ++second; });
        QCOMPARE(Beeper::count(), beeps + 1);
        QTRY_COMPARE(first, 1);
        QTest::qWait(100);
        QCOMPARE(second, 0);
        capture->capture(CaptureMode::video, [&second](const CaptureResult&) { ++second; });
        QVERIFY(!capture->isBusy());
        QCOMPARE(second, 0);
    }

    void aRefusedPermissionShowsTheAlertAndNeverCompletes()
    {
        auto capture = service();
        m_permission.granted = false;
        for (int button = 0; button < 2; ++button) {
            QStringList texts;
            QTimer::singleShot(100, [&texts, button] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                if (!box)
                    return;
                texts << box->text() << box->buttons().at(0)->text() << box->buttons().at(1)->text();
                box->buttons().at(button)->click();
            });
            int completions = 0;
            capture->capture(CaptureMode::screen, [&completions](const CaptureResult&) { ++completions; });
            QCOMPARE(
                texts, (QStringList { u"Ekran kaydı izni gerekli"_s, u"Ayarları aç"_s, u"Daha sonra"_s }));
            QVERIFY(!capture->isBusy());
            QTest::qWait(500);
            QCOMPARE(completions, 0);
            QCOMPARE(m_permission.requests, button + 1);
            QCOMPARE(m_permission.settingsOpened, 1); // only "Ayarları aç" opens them
        }
        QVERIFY(!QFile::exists(m_log)); // the helper never ran
        QVERIFY(leftoverFolders().isEmpty());
    }

    void onlyTheVisibleWindowsAreHiddenAndBroughtBack()
    {
        QWidget visible;
        visible.setWindowTitle(u"visible"_s);
        visible.show();
        QWidget invisible;
        QWidget minimised;
        minimised.showMinimized();
        QVERIFY(QTest::qWaitForWindowExposed(&visible));
        auto capture = service();
        qputenv("FAKE_CAPTURE", "slow");
        int completions = 0;
        capture->capture(CaptureMode::screen, [&completions](const CaptureResult&) { ++completions; });
        QVERIFY(!visible.isVisible());
        QVERIFY(!invisible.isVisible());
        QTRY_VERIFY(capture->process() && capture->process()->state() == QProcess::Running);
        capture->process()->kill();
        QTRY_COMPARE(completions, 1);
        QVERIFY(visible.isVisible());
        QVERIFY(!invisible.isVisible());
        QVERIFY(minimised.isMinimized());
        QVERIFY(leftoverFolders().isEmpty());
    }

    void aHelperThatCannotStartIsAFailure()
    {
        QWidget window;
        window.show();
        CaptureService capture(m_permission, m_pointer, m_dir.filePath(u"no-such-helper"_s));
        capture.setTemporaryRoot(m_dir.filePath(u"runtime"_s));
        const QList<CaptureResult> results = run(capture, CaptureMode::region, u"image"_s);
        QCOMPARE(results.size(), 1);
        QVERIFY(!results[0].ok());
        QVERIFY(!results[0].error().localizedDescription().isEmpty());
        QVERIFY(!capture.isBusy());
        QVERIFY(window.isVisible());
        QVERIFY(leftoverFolders().isEmpty());
    }

    void aFolderThatCannotBeMadeIsAFailureWithTheSystemsReason()
    {
        QWidget window;
        window.show();
        auto capture = service();
        capture->setTemporaryRoot(m_image + u"/below-a-file"_s);
        const QList<CaptureResult> results = run(*capture, CaptureMode::screen, u"image"_s);
        QCOMPARE(results.size(), 1);
        QVERIFY(!results[0].ok());
        QCOMPARE(results[0].error().localizedDescription(), qt_error_string(ENOTDIR));
        QVERIFY(!capture->isBusy());
        QVERIFY(window.isVisible());
    }

    void quittingEndsARunningHelperAndRemovesItsFolder()
    {
        auto capture = service();
        qputenv("FAKE_CAPTURE", "slow");
        int completions = 0;
        capture->capture(CaptureMode::region, [&completions](const CaptureResult&) { ++completions; });
        QTRY_VERIFY(capture->process() && capture->process()->state() == QProcess::Running);
        QCOMPARE(leftoverFolders().size(), 1);
        const qint64 pid = capture->process()->processId();
        capture->terminateRunning();
        QVERIFY(!QFileInfo::exists(u"/proc/%1"_s.arg(pid))); // ended and reaped
        QVERIFY(leftoverFolders().isEmpty());
        QTest::qWait(200);
        QCOMPARE(completions, 0);
    }
};

QTEST_MAIN(TestCaptureService)
#include "tst_captureservice.moc"
