#include "AboutController.h"
#include "AppDelegate.h"
#include "Preferences.h"
#include "WindowHelpers.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestAboutController : public QObject {
    Q_OBJECT

    static QList<QLabel*> textLabels(const AboutController& window)
    {
        QList<QLabel*> labels;
        const QList<QLabel*> all = window.findChildren<QLabel*>();
        for (QLabel* label : all) {
            if (label != window.iconView())
                labels.append(label);
        }
        std::sort(labels.begin(), labels.end(), [](QLabel* a, QLabel* b) { return a->y() < b->y(); });
        return labels;
    }

private Q_SLOTS:
    void theWelcomeGuise()
    {
        AboutController window(true);
        window.showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.windowTitle(), u"Vexet’e hoş geldin"_s);
        QCOMPARE(window.dismissButton()->text(), u"Başlayalım"_s);
        QCOMPARE(window.size(), QSize(540, 745));
    }

    void theAboutGuiseLaysOutEveryRow()
    {
        AboutController window(false);
        window.showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.windowTitle(), u"Vexet hakkında"_s);
        QCOMPARE(window.dismissButton()->text(), u"Kapat"_s);
        QCOMPARE(window.iconView()->size(), QSize(88, 88));
        QCOMPARE(window.iconView()->pos(), QPoint(24, 24));
        QVERIFY(!window.iconView()->pixmap().isNull());

        const QList<QLabel*> labels = textLabels(window);
        const QStringList expected {
            u"Vexet"_s,
            u"Hızlı yakala. Kolayca kırp ve kaydet."_s,
            u"Program Yaratıcısı: Vexet ekibi"_s,
            u"Sürüm: Ömür Boyu Ücretsiz"_s,
            u"İletişim: projenin hata ve öneri takipçisi (Issues sayfası)"_s,
            AboutController::versionLine(QStringLiteral(VEXET_VERSION)),
            u"Tamamen ücretsiz ekran görüntüsü ve video kaydı uygulaması. Reklam, abonelik, hesap veya "
            u"uygulama "
            u"içi satın alma yok."_s,
            u"Sistem tepsisindeki çerçeve simgesinden alan, pencere veya ekran yakala. Kısayollarını "
            u"Ayarlar’dan değiştir; önizlemede kırp, kopyala ve kaydet."_s,
            u"Görüntüler cihazında işlenir; Vexet sunucuya veri göndermez. X11 masaüstünde ekran resmi için "
            u"izin gerekmez. Bu tanıtım her kullanıcı için yalnızca ilk açılışta otomatik gösterilir."_s,
        };
        QCOMPARE(labels.size(), expected.size());
        const QList<int> sizes { 32, 18, 13, 13, 13, 13, 13, 13, 12 };
        int previousBottom = window.iconView()->geometry().bottom();
        for (int i = 0; i < labels.size(); ++i) {
            QCOMPARE(labels[i]->text(), expected[i]);
            QCOMPARE(labels[i]->font().pixelSize(), sizes[i]);
            QCOMPARE(labels[i]->font().bold(), i == 0);
            QVERIFY(labels[i]->wordWrap());
            QVERIFY(labels[i]->width() <= WindowHelpers::wrapWidth);
            QCOMPARE(labels[i]->x(), 24);
            // Rows follow each other 14 points apart and are never cut: each shows its full height.
            QCOMPARE(labels[i]->y() - previousBottom - 1, 14);
            QVERIFY(labels[i]->height() >= labels[i]->heightForWidth(labels[i]->width()));
            previousBottom = labels[i]->geometry().bottom();
        }
        QVERIFY(labels.last()->height() > labels[3]->height()); // the long texts wrap
        QCOMPARE(window.dismissButton()->y() - previousBottom - 1, 14);
        QVERIFY(window.dismissButton()->geometry().bottom() < 745 - 24);
    }

    void theVersionRowNamesTheMajorAndMinorVersion()
    {
        QCOMPARE(AboutController::versionLine(u"1.2.0"_s), u"Versiyon: v1.2 — Video Kaydı"_s);
        QCOMPARE(AboutController::versionLine(u"2.10.3"_s), u"Versiyon: v2.10 — Video Kaydı"_s);
    }

    void onAWaylandDesktopWithoutATrayTheTextsSaySo()
    {
        AboutController window(true, DesktopFacts { true, false });
        const QList<QLabel*> labels = textLabels(window);
        QCOMPARE(labels.at(7)->text(),
            u"Vexet penceresinden alan, pencere veya ekran yakala. Kısayollarını masaüstünün klavye "
            u"ayarlarında ata; önizlemede kırp, kopyala ve kaydet."_s);
        QCOMPARE(labels.at(8)->text(),
            u"Görüntüler cihazında işlenir; Vexet sunucuya veri göndermez. Ekran resimlerini masaüstünün "
            u"ekran görüntüsü kapısından ister; masaüstün ilk çekimde izin sorabilir. Bu tanıtım her "
            u"kullanıcı için yalnızca ilk açılışta otomatik gösterilir."_s);
    }

    void theButtonClosesTheWindow()
    {
        AboutController window(false);
        window.showWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::mouseClick(window.dismissButton(), Qt::LeftButton);
        QTRY_VERIFY(!window.isVisible());
    }

    void withoutTheIconResourceTheApplicationIconIsShown()
    {
        QPixmap appPixmap(64, 64);
        appPixmap.fill(Qt::green);
        QApplication::setWindowIcon(QIcon(appPixmap));
        const QIcon icon = AboutController::icon(u":/icons/no-such-icon.svg"_s);
        QCOMPARE(icon.pixmap(88, 88).toImage().pixel(40, 40), QColor(Qt::green).rgb());
        QVERIFY(AboutController::icon(u":/icons/AppIcon.svg"_s).pixmap(88, 88).toImage().pixel(40, 40)
            != QColor(Qt::green).rgb());
    }

    void theWelcomeIsStoredBeforeItShowsAndAppearsOncePerUser()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(u"Vexet.conf"_s);
        for (int launch = 0; launch < 2; ++launch) {
            Preferences preferences(std::make_unique<QSettings>(file, QSettings::IniFormat));
            AppDelegate delegate(preferences, {});
            delegate.applicationDidFinishLaunching();
            if (launch == 0) {
                QVERIFY(delegate.about());
                QVERIFY(delegate.about()->isVisible());
                QCOMPARE(delegate.about()->windowTitle(), u"Vexet’e hoş geldin"_s);
                // Already on disk while the window is up, so a crash now does not bring it back.
                QSettings onDisk(file, QSettings::IniFormat);
                QCOMPARE(onDisk.value(u"hasWelcomed"_s).toString(), u"true"_s);
            } else {
                QCOMPARE(delegate.about(), nullptr);
                delegate.openAbout();
                QCOMPARE(delegate.about()->windowTitle(), u"Vexet hakkında"_s);
                QCOMPARE(delegate.about()->dismissButton()->text(), u"Kapat"_s);
            }
        }
    }

    void ctrlQInTheWindowAsksTheApplicationToQuit()
    {
        AboutController window(false);
        window.showWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        struct QuitCounter : QObject {
            int quits = 0;
            bool eventFilter(QObject* watched, QEvent* event) override
            {
                if (watched == QCoreApplication::instance() && event->type() == QEvent::Quit) {
                    ++quits;
                    return true;
                }
                return false;
            }
        } counter;
        QCoreApplication::instance()->installEventFilter(&counter);
        QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
        QTRY_COMPARE(counter.quits, 1);
        QCoreApplication::instance()->removeEventFilter(&counter);
    }
};

QTEST_MAIN(TestAboutController)
#include "tst_aboutcontroller.moc"
