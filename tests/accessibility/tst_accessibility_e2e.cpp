#include "AtSpiClient.h"
#include "CropGeometry.h"
#include "DesktopProbe.h"
#include "VexetProcess.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <X11/keysym.h>
#include <algorithm>

using namespace Qt::StringLiterals;

// What a screen reader finds of the real program on the virtual desktop, read through AT-SPI from
// the running process: every window is a window (or a dialog) named by its title, every button
// and check box is named by its label, and the editor's canvas and the helper's overlay say what is
// selected.
class TestAccessibilityEndToEnd : public QObject {
    Q_OBJECT

    DesktopProbe m_probe;
    std::unique_ptr<AtSpiClient> m_atSpi;
    QTemporaryDir m_configHome;
    std::unique_ptr<VexetProcess> m_vexet;
    AtSpiNode m_application;

    // Hands a command to the running program, as a desktop shortcut would.
    bool command(const QStringList& arguments)
    {
        QProcess process;
        process.setProcessEnvironment(m_vexet->process().processEnvironment());
        process.start(VexetProcess::binary(), arguments);
        return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit
            && process.exitCode() == 0;
    }

    // The program's windows on screen.
    QList<AtSpiNode> shownWindows()
    {
        QList<AtSpiNode> result;
        const QList<AtSpiNode> windows = m_atSpi->children(m_application);
        for (const AtSpiNode& window : windows) {
            if (m_atSpi->isShowing(window))
                result.append(window);
        }
        return result;
    }

    // The program's window on screen with this name, once it is there.
    std::optional<AtSpiNode> waitForWindow(const QString& name)
    {
        std::optional<AtSpiNode> found;
        const bool appeared
            = QTest::qWaitFor([&] { return (found = named(shownWindows(), name)).has_value(); }, 20000);
        return appeared ? found : std::nullopt;
    }

    bool waitUntilGone(const QString& name)
    {
        return QTest::qWaitFor([&] { return !named(shownWindows(), name); }, 20000);
    }

    // The objects below window with this role.
    QList<AtSpiNode> withRole(const AtSpiNode& window, AtSpiRole role)
    {
        QList<AtSpiNode> result;
        const QList<AtSpiNode> all = m_atSpi->descendants(window);
        for (const AtSpiNode& node : all) {
            if (m_atSpi->role(node) == role)
                result.append(node);
        }
        return result;
    }

    // The names of nodes, sorted.
    QStringList names(const QList<AtSpiNode>& nodes)
    {
        QStringList result;
        for (const AtSpiNode& node : nodes)
            result.append(m_atSpi->name(node));
        return sorted(result);
    }

    static QStringList sorted(QStringList list)
    {
        list.sort();
        return list;
    }

    std::optional<AtSpiNode> named(const QList<AtSpiNode>& nodes, const QString& name)
    {
        for (const AtSpiNode& node : nodes) {
            if (m_atSpi->name(node) == name)
                return node;
        }
        return std::nullopt;
    }

    // A window of the program with this title: a window (AT-SPI "frame") or a dialog, named as its
    // title bar is, with nothing left over as a "filler" among the program's windows.
    AtSpiNode checkWindow(const QString& title, const QList<AtSpiRole>& roles = { AtSpiRole::frame })
    {
        const std::optional<AtSpiNode> window = waitForWindow(title);
        if (!window) {
            qWarning() << "no accessible window named" << title;
            return {};
        }
        const std::optional<AtSpiRole> role = m_atSpi->role(*window);
        const bool rightRole = role && roles.contains(*role);
        if (!rightRole)
            qWarning() << title << "has the role" << m_atSpi->roleName(*window);
        // The title bar says the same, once the window manager has mapped the window.
        const bool onScreen = m_probe.waitForWindowsTitled(m_vexet->pid(), title, 1);
        if (!onScreen)
            qWarning() << "no window on screen titled" << title;
        return rightRole && onScreen ? *window : AtSpiNode {};
    }

    void checkNoFillerWindows()
    {
        const QList<AtSpiNode> windows = shownWindows();
        for (const AtSpiNode& window : windows)
            QVERIFY2(m_atSpi->role(window) != AtSpiRole::filler, qPrintable(m_atSpi->name(window)));
    }

    // Every button and check box below window has a name.
    void checkEveryControlIsNamed(const AtSpiNode& window)
    {
        for (AtSpiRole role : { AtSpiRole::pushButton, AtSpiRole::checkBox }) {
            const QList<AtSpiNode> controls = withRole(window, role);
            for (const AtSpiNode& control : controls)
                QVERIFY2(!m_atSpi->name(control).isEmpty(),
                    qPrintable(m_atSpi->roleName(control) + u" without a name"_s));
        }
    }

    bool press(const AtSpiNode& window, const QString& buttonName)
    {
        const std::optional<AtSpiNode> button = named(withRole(window, AtSpiRole::pushButton), buttonName);
        return button && m_atSpi->doAction(*button, u"Press"_s);
    }

    void closeWindowTitled(const QString& title)
    {
        const QList<xcb_window_t> windows = m_probe.windowsTitled(m_vexet->pid(), title);
        for (xcb_window_t window : windows)
            m_probe.requestClose(window);
        QVERIFY(waitUntilGone(title));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_probe.isReady(), "needs the virtual desktop (X server with XTest)");
        m_atSpi = std::make_unique<AtSpiClient>();
        QVERIFY2(m_atSpi->isConnected(), qPrintable(m_atSpi->error()));
        // The program as a screen reader finds it: Qt's AT-SPI bridge on, a fresh user (the welcome
        // window comes first).
        m_vexet = std::make_unique<VexetProcess>(m_configHome.path());
        QProcessEnvironment environment = m_vexet->process().processEnvironment();
        environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
        m_vexet->process().setProcessEnvironment(environment);
        QVERIFY(m_vexet->start());
        std::optional<AtSpiNode> application;
        QVERIFY2(QTest::qWaitFor(
                     [&] { return (application = m_atSpi->application(m_vexet->pid())).has_value(); }, 30000),
            "the program did not register with the AT-SPI registry");
        m_application = *application;
        QVERIFY(m_atSpi->role(m_application) == AtSpiRole::application);
        QCOMPARE(m_atSpi->name(m_application), u"Vexet"_s);
    }

    void cleanupTestCase()
    {
        if (m_vexet)
            QVERIFY(m_vexet->terminateAndWait());
    }

    void theWelcomeWindowIsAWindowNamedByItsTitle()
    {
        const QString title = u"Vexet’e hoş geldin"_s;
        const AtSpiNode window = checkWindow(title);
        QVERIFY(!window.path.isEmpty());
        checkNoFillerWindows();
        QCOMPARE(names(withRole(window, AtSpiRole::pushButton)), QStringList { u"Başlayalım"_s });
        QCOMPARE(names(withRole(window, AtSpiRole::image)), QStringList { u"Vexet simgesi"_s });
        QVERIFY(press(window, u"Başlayalım"_s));
        QVERIFY(waitUntilGone(title));
    }

    void theSettingsWindowNamesItsCheckBoxAndEveryShortcut()
    {
        QVERIFY(command({ u"--settings"_s }));
        const QString title = u"Vexet — Ayarlar"_s;
        const AtSpiNode window = checkWindow(title);
        QVERIFY(!window.path.isEmpty());
        checkNoFillerWindows();
        QCOMPARE(names(withRole(window, AtSpiRole::checkBox)),
            QStringList { u"Çekimden sonra orijinali otomatik panoya kopyala"_s });
        const QStringList buttons { u"Varsayılan kısayolları geri yükle"_s, u"⌥⇧⌘3"_s, u"⌥⇧⌘4"_s, u"⌥⇧⌘5"_s,
            u"⌥⇧⌘G"_s };
        QCOMPARE(names(withRole(window, AtSpiRole::pushButton)), sorted(buttons));
        const std::optional<AtSpiNode> windowShortcut
            = named(withRole(window, AtSpiRole::pushButton), u"⌥⇧⌘4"_s);
        QVERIFY(windowShortcut);
        QCOMPARE(m_atSpi->description(*windowShortcut),
            u"Pencere yakala kısayolu. Değiştirmek için tıkla, ardından yeni tuş birleşimine bas."_s);

        // The shortcut of another capture, recorded here: the alert is a dialog named as its title bar.
        m_probe.focus(m_probe.windowsTitled(m_vexet->pid(), title).constFirst());
        QVERIFY(m_atSpi->doAction(*windowShortcut, u"Press"_s));
        QTRY_COMPARE_WITH_TIMEOUT(m_atSpi->name(*windowShortcut), u"Tuşlara bas… (Esc: iptal)"_s, 10000);
        QVERIFY(m_probe.input().typeCombination({ XK_Alt_L, XK_Shift_L, XK_Super_L, XK_3 }));
        const AtSpiNode alert = checkWindow(u"Vexet"_s, { AtSpiRole::dialog, AtSpiRole::alert });
        QVERIFY(!alert.path.isEmpty());
        checkEveryControlIsNamed(alert);
        QVERIFY(press(alert, u"Tamam"_s));
        QVERIFY(waitUntilGone(u"Vexet"_s));
        closeWindowTitled(title);
    }

    void theEditorNamesItsButtonsAndDescribesTheSelection()
    {
        const QRect primary = QGuiApplication::primaryScreen()->geometry();
        m_probe.input().movePointer(primary.center());
        QVERIFY(command({ u"--capture"_s, u"screen"_s }));
        const QString title = u"Vexet — Önizleme ve kırpma"_s;
        const AtSpiNode window = checkWindow(title);
        QVERIFY(!window.path.isEmpty());
        checkNoFillerWindows();
        QCOMPARE(names(withRole(window, AtSpiRole::pushButton)),
            sorted({ u"Seçimi kırp"_s, u"Geri al"_s, u"Orijinale dön"_s, u"Kopyala"_s, u"Kaydet…"_s }));

        const QList<AtSpiNode> canvases = withRole(window, AtSpiRole::canvas);
        QCOMPARE(canvases.size(), 1);
        const AtSpiNode canvas = canvases.constFirst();
        QCOMPARE(m_atSpi->name(canvas), u"Kırpılacak resim"_s);
        const QString image = u"Resim %1 × %2 piksel; "_s.arg(primary.width()).arg(primary.height());
        QCOMPARE(m_atSpi->description(canvas), image + u"seçim yok."_s);

        // A drag over the picture: the description gives the selection in the picture's pixels.
        const QRect shown = m_atSpi->extents(canvas);
        QVERIFY(!shown.isEmpty());
        const QPoint from = shown.topLeft() + QPoint(shown.width() / 4, shown.height() / 3);
        const QPoint to = shown.topLeft() + QPoint(shown.width() / 2, shown.height() * 2 / 3);
        m_probe.input().movePointer(from);
        m_probe.input().pressButton(1);
        m_probe.input().movePointer((from + to) / 2);
        m_probe.input().movePointer(to);
        m_probe.input().releaseButton(1);
        const QRectF drawn = CropGeometry::imageRect(primary.size(), QSizeF(shown.size()));
        const std::optional<QRect> pixels = CropGeometry::pixelRect(
            CropGeometry::span(from - shown.topLeft(), to - shown.topLeft()), drawn, primary.size());
        QVERIFY(pixels);
        const QString selected = image
            + u"seçili alan %1 × %2 piksel, sol üst köşesi %3, %4."_s.arg(pixels->width())
                  .arg(pixels->height())
                  .arg(pixels->x())
                  .arg(pixels->y());
        QTRY_COMPARE_WITH_TIMEOUT(m_atSpi->description(canvas), selected, 10000);

        // The save dialog on the editor: a dialog named as its title bar, its buttons named.
        QVERIFY(press(window, u"Kaydet…"_s));
        std::optional<AtSpiNode> dialog;
        QVERIFY(QTest::qWaitFor(
            [&] {
                const QList<AtSpiNode> windows = shownWindows();
                for (const AtSpiNode& each : windows) {
                    if (m_atSpi->role(each) == AtSpiRole::dialog)
                        dialog = each;
                }
                return dialog.has_value();
            },
            20000));
        const QString dialogTitle = m_atSpi->name(*dialog);
        QVERIFY(!dialogTitle.isEmpty());
        QVERIFY(m_probe.waitForWindowsTitled(m_vexet->pid(), dialogTitle, 1));
        checkEveryControlIsNamed(*dialog);
        QVERIFY(press(*dialog, u"İptal"_s));
        QVERIFY(waitUntilGone(dialogTitle));
        closeWindowTitled(title);
    }

    void theVideoWindowNamesItsOptions()
    {
        QVERIFY(command({ u"--capture"_s, u"video"_s }));
        const QString title = u"Vexet — Video kaydı"_s;
        const AtSpiNode window = checkWindow(title);
        QVERIFY(!window.path.isEmpty());
        checkNoFillerWindows();
        checkEveryControlIsNamed(window);
        const QStringList checkBoxes = names(withRole(window, AtSpiRole::checkBox));
        for (const QString& option : { u"Sistem sesi"_s, u"Fare imlecini göster"_s })
            QVERIFY2(checkBoxes.contains(option), qPrintable(checkBoxes.join(u", "_s)));
        QVERIFY(names(withRole(window, AtSpiRole::pushButton)).contains(u"Kaydı başlat…"_s));
        closeWindowTitled(title);
    }

    void theHelpersOverlayIsAWindowThatSaysWhatIsSelected()
    {
        QTemporaryDir folder;
        const QString file = folder.filePath(u"alan.png"_s);
        QProcess helper;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);
        helper.setProcessEnvironment(environment);
        helper.start(QFileInfo(VexetProcess::binary()).dir().filePath(u"vexet-capture"_s),
            { u"-x"_s, u"-t"_s, u"png"_s, u"-i"_s, u"-s"_s, file });
        QVERIFY(helper.waitForStarted(10000));
        std::optional<AtSpiNode> application;
        QVERIFY2(
            QTest::qWaitFor(
                [&] { return (application = m_atSpi->application(helper.processId())).has_value(); }, 30000),
            "vexet-capture did not register with the AT-SPI registry");
        std::optional<AtSpiNode> overlay;
        QVERIFY(QTest::qWaitFor(
            [&] {
                const QList<AtSpiNode> windows = m_atSpi->children(*application);
                for (const AtSpiNode& window : windows) {
                    if (m_atSpi->isShowing(window))
                        overlay = window;
                }
                return overlay.has_value();
            },
            20000));
        QVERIFY(m_atSpi->role(*overlay) == AtSpiRole::frame);
        QCOMPARE(m_atSpi->name(*overlay), u"Vexet — Ekrandan seçim"_s);
        const QString whatToDo = u"Donmuş ekran resmi: fareyle seç. Esc ya da sağ tık iptal eder."_s;
        QCOMPARE(m_atSpi->description(*overlay), whatToDo);

        // While a drag goes on, the description names the selection; Escape then cancels.
        m_probe.input().movePointer(QPoint(100, 200));
        m_probe.input().pressButton(1);
        m_probe.input().movePointer(QPoint(250, 300));
        m_probe.input().movePointer(QPoint(400, 500));
        const QString selected = whatToDo + u" Seçili alan 300 × 300 piksel, sol üst köşesi 100, 200."_s;
        QTRY_COMPARE_WITH_TIMEOUT(m_atSpi->description(*overlay), selected, 10000);
        QVERIFY(m_probe.input().typeCombination({ XK_Escape }));
        m_probe.input().releaseButton(1);
        QVERIFY(helper.waitForFinished(20000));
        QCOMPARE(helper.exitCode(), 1);
        QVERIFY(!QFileInfo::exists(file));
    }
};

QTEST_MAIN(TestAccessibilityEndToEnd)
#include "tst_accessibility_e2e.moc"
