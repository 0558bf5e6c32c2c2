#include "DesktopProbe.h"
#include "EditorController.h"
#include "VexetProcess.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QMimeData>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <X11/keysym.h>

using namespace Qt::StringLiterals;

// A screenshot from the running program's menu, chosen with the pointer on the second monitor.
class TestScreenshotEndToEnd : public QObject {
    Q_OBJECT

    DesktopProbe m_probe;
    QTemporaryDir m_configHome;
    std::unique_ptr<QWidget> m_pattern;
    QImage m_patternImage;
    const QString m_editorTitle = u"Vexet — Önizleme ve kırpma"_s;

    static QImage pattern(const QSize& size)
    {
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < size.width(); ++x)
                line[x] = qRgb(x & 0xff, y & 0xff, (x / 256 + y / 256 * 5) * 20);
        }
        return image;
    }

    QStringList leftoverFolders() const
    {
        return QDir(qEnvironmentVariable("XDG_RUNTIME_DIR")).entryList({ u"Vexet-*"_s }, QDir::AllEntries);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_probe.isReady());
        QSettings settings(m_configHome.filePath(u"Vexet/Vexet.conf"_s), QSettings::IniFormat);
        settings.setValue(u"hasWelcomed"_s, true);
        settings.sync();

        QScreen* second = QGuiApplication::screens().at(1);
        m_patternImage = pattern(second->size());
        auto* label = new QLabel;
        label->setPixmap(QPixmap::fromImage(m_patternImage));
        label->setWindowFlags(Qt::FramelessWindowHint);
        m_pattern.reset(label);
        m_pattern->winId();
        m_pattern->windowHandle()->setScreen(second);
        m_pattern->setGeometry(second->geometry());
        m_pattern->showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(m_pattern.get()));
        QTRY_COMPARE(m_probe.windows().grab(second->geometry()), m_patternImage);
    }

    void theMenusScreenCaptureTakesTheMonitorUnderThePointer()
    {
        VexetProcess vexet(m_configHome.path());
        QVERIFY(vexet.start());
        std::optional<xcb_window_t> icon;
        QVERIFY(QTest::qWaitFor([&] { return (icon = m_probe.trayIcon(vexet.pid())).has_value(); }, 30000));
        QGuiApplication::clipboard()->clear();

        // Open the menu, move the pointer to the second monitor, choose "Ekranı yakala" by keyboard.
        m_probe.input().click(m_probe.windows().rootGeometry(*icon)->center());
        QVERIFY(QTest::qWaitFor([&] { return !m_probe.popupMenus(vexet.pid()).isEmpty(); }, 20000));
        const QRect second = QGuiApplication::screens().at(1)->geometry();
        m_probe.input().movePointer(second.center());
        for (int item = 0; item < 3; ++item)
            QVERIFY(m_probe.input().typeCombination({ XK_Down }));
        QVERIFY(m_probe.input().typeCombination({ XK_Return }));

        QVERIFY2(m_probe.waitForWindowsTitled(vexet.pid(), m_editorTitle, 1), "no editor opened");

        // The capture is on the clipboard at once: exactly the second monitor's pixels.
        QImage copied;
        QVERIFY(QTest::qWaitFor(
            [&] {
                const QMimeData* data = QGuiApplication::clipboard()->mimeData();
                copied = data && data->hasImage() ? qvariant_cast<QImage>(data->imageData()) : QImage();
                return !copied.isNull();
            },
            20000));
        QCOMPARE(copied.size(), second.size());
        QCOMPARE(copied.convertToFormat(QImage::Format_RGB32), m_patternImage);

        // The status line reads the second monitor's size, as the same editor here shows it.
        const xcb_window_t editorWindow = m_probe.windowsTitled(vexet.pid(), m_editorTitle).first();
        EditorController local(QImage(second.size(), QImage::Format_RGB32));
        local.resize(m_probe.windows().rootGeometry(editorWindow)->size());
        local.show();
        QVERIFY(QTest::qWaitForWindowExposed(&local));
        local.copyImage();
        QCOMPARE(local.statusLabel()->text(), u"1280 × 1024 piksel • Panoya kopyalandı"_s);
        const QRect labelRect(local.statusLabel()->mapTo(&local, QPoint(0, 0)), local.statusLabel()->size());
        const QImage expected = local.statusLabel()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        // Out of the way first: the window manager may have put it right over the other one.
        const auto localWindow = static_cast<xcb_window_t>(local.winId());
        local.hide();
        QTRY_VERIFY(!m_probe.windows().isViewable(localWindow));
        const QRect shownRect = labelRect.translated(m_probe.windows().rootGeometry(editorWindow)->topLeft());
        QTRY_COMPARE(m_probe.windows().grab(shownRect), expected);

        QVERIFY(leftoverFolders().isEmpty());
        QVERIFY(vexet.terminateAndWait());
    }
};

QTEST_MAIN(TestScreenshotEndToEnd)
#include "tst_screenshot_e2e.moc"
