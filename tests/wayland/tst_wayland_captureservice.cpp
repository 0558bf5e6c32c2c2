#include "AlertCatcher.h"
#include "CaptureService.h"
#include "CaptureToolProtocol.h"
#include "PrivatePortal.h"
#include "WaylandPointerScreen.h"
#include "WaylandScreenCapturePermission.h"

#include <QApplication>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

// The capture service with the real helper on the Wayland desktop: what the user sees when the
// desktop refuses a picture, cancels its picker or fails, through the real portal frontend.
class TestWaylandCaptureService : public QObject {
    Q_OBJECT

    WaylandScreenCapturePermission m_permission;
    WaylandPointerScreen m_pointer;
    const QByteArray m_bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");

    QList<CaptureResult> capture(CaptureMode mode)
    {
        CaptureService service(
            m_permission, m_pointer, qEnvironmentVariable("VEXET_BINARY_DIR") + u"/src/app/vexet-capture"_s);
        QList<CaptureResult> results;
        service.capture(mode, [&results](CaptureResult result) { results.append(std::move(result)); });
        if (!QTest::qWaitFor([&] { return !results.isEmpty(); }, 60000))
            qWarning("the capture never finished");
        QTest::qWait(50); // a second delivery would show up here
        return results;
    }

    static void answerSlurp(const QByteArray& answer)
    {
        QFile file(qEnvironmentVariable("VEXET_SLURP_ANSWER"));
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write(answer);
    }

private Q_SLOTS:
    void cleanup() { qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus); }

    void aRefusalShowsThePermissionAlertWithTheDesktopsOwnText()
    {
        PrivatePortal portal(1);
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        qputenv("DBUS_SESSION_BUS_ADDRESS", portal.busAddress().toUtf8());
        // sway has no settings program to open: no "Ayarları aç" then.
        QVERIFY(!m_permission.canOpenSettings());
        for (CaptureMode mode : { CaptureMode::screen, CaptureMode::region }) {
            AlertCatcher alerts;
            const QList<CaptureResult> results = capture(mode);
            QCOMPARE(results.size(), 1);
            QVERIFY(results[0].ok());
            QVERIFY(!results[0].value().has_value());
            QCOMPARE(alerts.alerts(),
                (QList<QStringList> { { u"Vexet"_s, u"Ekran kaydı izni gerekli"_s,
                    u"Masaüstün Vexet’in ekran resmi almasına izin vermedi. Masaüstünün ayarlarında gizlilik "
                    u"ya "
                    u"da uygulama izinleri bölümünden Vexet’e ekran resmi izni ver; masaüstü sorarsa izin "
                    u"ver. "
                    u"Ardından yakalamayı tekrar dene. Vexet yalnızca istediğin anda ekran resmi alır."_s,
                    u"Daha sonra"_s } }));
        }
    }

    void aClosedPickerIsACancelWithoutAnyAlert()
    {
        PrivatePortal portal(1);
        QVERIFY2(portal.isReady(), qPrintable(portal.errorString()));
        qputenv("DBUS_SESSION_BUS_ADDRESS", portal.busAddress().toUtf8());
        AlertCatcher alerts;
        const QList<CaptureResult> results = capture(CaptureMode::window);
        QCOMPARE(results.size(), 1);
        QVERIFY(results[0].ok());
        QVERIFY(!results[0].value().has_value());
        QVERIFY(alerts.alerts().isEmpty());
    }

    void aFailedPictureIsAFailureInTheWindowModeToo()
    {
        // sway's portal answers a picker it could not run, or one the user closed, with an error.
        answerSlurp("cancel\n");
        const QList<CaptureResult> results = capture(CaptureMode::window);
        QCOMPARE(results.size(), 1);
        QVERIFY(!results[0].ok());
        QCOMPARE(results[0].error().code(), int(CaptureExitStatus::displayFailure));
        QCOMPARE(results[0].error().localizedDescription(),
            u"Ekran resmi alınamadı. Ekran kaydı iznini kontrol et ve Vexet’i yeniden aç."_s);
    }

    void thePortalsPictureArrivesAsTheImage()
    {
        answerSlurp("1920,0 1280x1024\n");
        const QList<CaptureResult> results = capture(CaptureMode::window);
        QCOMPARE(results.size(), 1);
        QVERIFY(results[0].ok());
        QVERIFY(results[0].value().has_value());
        QCOMPARE(results[0].value()->size(), QSize(1280, 1024));
    }
};

QTEST_MAIN(TestWaylandCaptureService)
#include "tst_wayland_captureservice.moc"
