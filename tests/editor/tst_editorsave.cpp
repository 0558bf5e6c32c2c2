#include "CropCanvas.h"
#include "EditorController.h"
#include "EditorTesting.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace EditorTesting;

namespace {

QDateTime fixedNow()
{
    return QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5));
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestEditorSave : public QObject {
    Q_OBJECT

    QTemporaryDir m_home;
    QString m_pictures;
    std::unique_ptr<EditorController> m_editor;

    // Points the user's pictures folder somewhere through the XDG user-dirs file.
    void setPicturesFolder(const QString& folder)
    {
        QFile dirs(m_home.filePath(u"config/user-dirs.dirs"_s));
        QVERIFY(dirs.open(QIODevice::WriteOnly | QIODevice::Truncate));
        dirs.write("XDG_PICTURES_DIR=\"" + folder.toUtf8() + "\"\n");
    }

    bool open(const QImage& image)
    {
        m_editor = std::make_unique<EditorController>(image, &fixedNow);
        m_editor->showWindow();
        return QTest::qWaitForWindowActive(m_editor.get());
    }

    // Ctrl+S on the editor and the dialog it opens, once it is on screen.
    QFileDialog* pressSave()
    {
        QTest::keyClick(m_editor->canvas(), Qt::Key_S, Qt::ControlModifier);
        QFileDialog* panel = m_editor->savePanel();
        if (panel && !QTest::qWaitForWindowExposed(panel))
            return nullptr;
        return panel;
    }

    static QComboBox* formatBox(QFileDialog* panel)
    {
        const QList<QComboBox*> boxes = panel->findChildren<QComboBox*>();
        for (QComboBox* box : boxes) {
            if (box->findText(u"JPEG"_s) >= 0)
                return box;
        }
        return nullptr;
    }

    // The name field: the one line edit holding the name the dialog would save under.
    static QString proposedName(QFileDialog* panel)
    {
        return QFileInfo(panel->selectedFiles().value(0)).fileName();
    }

    static QLineEdit* nameField(QFileDialog* panel)
    {
        const QList<QLineEdit*> edits = panel->findChildren<QLineEdit*>();
        for (QLineEdit* edit : edits) {
            if (edit->isVisible() && !edit->text().isEmpty() && edit->text() == proposedName(panel))
                return edit;
        }
        return nullptr;
    }

    // Moves the format box to the other entry with the keyboard, as a user would.
    static void chooseFormat(QFileDialog* panel, int index)
    {
        QComboBox* box = formatBox(panel);
        QVERIFY(box);
        box->setFocus();
        QTest::keyClick(box, index > box->currentIndex() ? Qt::Key_Down : Qt::Key_Up);
        QCOMPARE(box->currentIndex(), index);
    }

    void saveThroughThePanel(QFileDialog* panel, const QString& path)
    {
        QLineEdit* field = nameField(panel);
        QVERIFY(field);
        field->setText(path);
        QPushButton* ok = nullptr;
        if (auto* buttons = panel->findChild<QDialogButtonBox*>()) {
            for (QAbstractButton* button : buttons->buttons()) {
                if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                    ok = qobject_cast<QPushButton*>(button);
            }
        }
        QVERIFY(ok && ok->isEnabled());
        QTest::mouseClick(ok, Qt::LeftButton);
        QTRY_VERIFY(!m_editor->findChild<QFileDialog*>());
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_home.isValid());
        QVERIFY(QDir().mkpath(m_home.filePath(u"config"_s)));
        m_pictures = m_home.filePath(u"Resimler"_s);
        QVERIFY(QDir().mkpath(m_pictures));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(u"config"_s)));
        setPicturesFolder(m_pictures);
        QCOMPARE(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation), m_pictures);
    }

    void cleanup() { m_editor.reset(); }

    void theSaveKeyOpensTheDialogOnTheWindow()
    {
        QVERIFY(open(coordinateImage(640, 480)));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        QCOMPARE(panel->parentWidget(), m_editor.get());
        QCOMPARE(panel->windowModality(), Qt::WindowModal);
        QCOMPARE(panel->acceptMode(), QFileDialog::AcceptSave);
        QVERIFY(panel->testOption(QFileDialog::DontUseNativeDialog));
        QCOMPARE(panel->directory().absolutePath(), m_pictures);
        QCOMPARE(proposedName(panel), u"Vexet_2025-01-02_03-04-05.png"_s);
        QVERIFY(nameField(panel));
        QCOMPARE(panel->labelText(QFileDialog::FileType), u"Dosya biçimi:"_s);
        bool labelShown = false;
        for (QLabel* label : panel->findChildren<QLabel*>())
            labelShown = labelShown || (label->text() == u"Dosya biçimi:"_s && label->isVisible());
        QVERIFY(labelShown);
        QCOMPARE(
            panel->nameFilters(), (QStringList { u"PNG (kayıpsız) (*.png)"_s, u"JPEG (*.jpg *.jpeg)"_s }));
        QComboBox* box = formatBox(panel);
        QVERIFY(box);
        QCOMPARE(box->count(), 2);
        QCOMPARE(box->itemText(0), u"PNG (kayıpsız)"_s);
        QCOMPARE(box->itemText(1), u"JPEG"_s);
        QCOMPARE(box->currentIndex(), 0);

        // Cancelling changes nothing.
        const QString status = m_editor->statusLabel()->text();
        panel->reject();
        QTRY_VERIFY(!m_editor->findChild<QFileDialog*>());
        QCOMPARE(m_editor->statusLabel()->text(), status);
        QVERIFY(QDir(m_pictures).isEmpty());
    }

    void theSaveButtonOpensItToo()
    {
        QVERIFY(open(coordinateImage(640, 480)));
        QTest::mouseClick(m_editor->saveButton(), Qt::LeftButton);
        QVERIFY(m_editor->savePanel());
        QVERIFY(QTest::qWaitForWindowExposed(m_editor->savePanel()));
        m_editor->savePanel()->reject();
    }

    void choosingJpegSwapsTheExtensionAndBack()
    {
        QVERIFY(open(coordinateImage(640, 480)));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        chooseFormat(panel, 1);
        QCOMPARE(proposedName(panel), u"Vexet_2025-01-02_03-04-05.jpg"_s);
        QVERIFY(nameField(panel));
        QCOMPARE(panel->defaultSuffix(), u"jpg"_s);
        chooseFormat(panel, 0);
        QCOMPARE(proposedName(panel), u"Vexet_2025-01-02_03-04-05.png"_s);
        QCOMPARE(panel->defaultSuffix(), u"png"_s);
        panel->reject();
    }

    void formatChoicesAreKnownByNameOrInFull()
    {
        QCOMPARE(EditorController::formatNames(), (QStringList { u"PNG (kayıpsız)"_s, u"JPEG"_s }));
        QCOMPARE(EditorController::formatIndexOf(u"JPEG"_s), 1);
        QCOMPARE(EditorController::formatIndexOf(u"JPEG (*.jpg *.jpeg)"_s), 1);
        QCOMPARE(EditorController::formatIndexOf(u"PNG (kayıpsız)"_s), 0);
        QCOMPARE(EditorController::formatIndexOf(u"PNG (kayıpsız) (*.png)"_s), 0);
        QCOMPARE(EditorController::formatIndexOf(u"GIF"_s), 0);
    }

    void aTypedNameWithoutExtensionGainsOne()
    {
        QVERIFY(open(coordinateImage(640, 480)));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        QLineEdit* field = nameField(panel);
        QVERIFY(field);
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, u"ekran"_s);
        QCOMPARE(field->text(), u"ekran"_s);
        chooseFormat(panel, 1);
        QCOMPARE(field->text(), u"ekran.jpg"_s);
        panel->reject();
    }

    void savingPngKeepsEveryPixel()
    {
        const QImage image = coordinateImage(700, 500);
        QVERIFY(open(image));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        const QString path = m_pictures + u"/kayipsiz.png"_s;
        saveThroughThePanel(panel, path);
        const QByteArray data = contents(path);
        QVERIFY(data.startsWith("\x89PNG\r\n\x1a\n"));
        QImage decoded;
        QVERIFY(decoded.loadFromData(data));
        QCOMPARE(decoded.convertToFormat(image.format()), image);
        QCOMPARE(m_editor->statusLabel()->text(), u"700 × 500 piksel • Kaydedildi: kayipsiz.png"_s);
    }

    void savingJpegWritesAJpeg()
    {
        QVERIFY(open(coordinateImage(700, 500)));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        chooseFormat(panel, 1);
        const QString path = m_pictures + u"/foto.jpg"_s;
        saveThroughThePanel(panel, path);
        const QByteArray data = contents(path);
        QVERIFY(data.startsWith("\xff\xd8\xff"));
        QImage decoded;
        QVERIFY(decoded.loadFromData(data, "JPEG"));
        QCOMPARE(decoded.size(), QSize(700, 500));
        QCOMPARE(m_editor->statusLabel()->text(), u"700 × 500 piksel • Kaydedildi: foto.jpg"_s);
    }

    void theImageSavedIsTheOneShownWhenSaveWasPressed()
    {
        const QImage image = coordinateImage(900, 600);
        QVERIFY(open(image));
        const QPoint centre = m_editor->canvas()->imageRect().center().toPoint();
        drag(m_editor->canvas(), centre, centre + QPoint(100, 80));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        // The editor moves on while the dialog is open.
        m_editor->crop();
        QVERIFY(m_editor->canvas()->image().width() < 900);
        const QString path = m_pictures + u"/onceki.png"_s;
        saveThroughThePanel(panel, path);
        QCOMPARE(QImage(path).convertToFormat(image.format()), image);
    }

    void anUnwritableFolderShowsTheSystemsReasonAndChangesNothing()
    {
        QVERIFY(open(coordinateImage(800, 600)));
        const QPoint centre = m_editor->canvas()->imageRect().center().toPoint();
        drag(m_editor->canvas(), centre - QPoint(100, 100), centre + QPoint(100, 80));
        QTest::mouseClick(m_editor->cropButton(), Qt::LeftButton);
        const QImage before = m_editor->canvas()->image();
        const QString status = m_editor->statusLabel()->text();

        // A read-only folder; with privileges that ignore it, sysfs, which refuses new files to all.
        QTemporaryDir scratch;
        QString folder = scratch.filePath(u"salt-okunur"_s);
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
        if (QFile probe(folder + u"/deneme"_s); probe.open(QIODevice::WriteOnly))
            folder = u"/sys"_s;

        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        AlertAnswer alert;
        answerNextAlert(&alert);
        saveThroughThePanel(panel, folder + u"/Vexet.png"_s);
        QVERIFY(alert.seen);
        QCOMPARE(alert.title, u"Vexet"_s);
        QCOMPARE(alert.text, u"Kaydedilemedi"_s);
        QCOMPARE(alert.informativeText, u"Permission denied"_s);
        QCOMPARE(alert.buttons, QStringList { u"Tamam"_s });

        QVERIFY(!QFile::exists(folder + u"/Vexet.png"_s));
        QVERIFY(m_editor->isVisible());
        QCOMPARE(m_editor->canvas()->image(), before);
        QCOMPARE(m_editor->statusLabel()->text(), status);
        QCOMPARE(m_editor->undoImages().size(), 1);
        QVERIFY(m_editor->undoButton()->isEnabled());
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    void anImageTheEncoderRefusesShowsItsOwnAlert()
    {
        // JPEG stops at 65500 pixels a side.
        QImage tooWide(70000, 2, QImage::Format_RGB32);
        tooWide.fill(Qt::darkGreen);
        QVERIFY(open(tooWide));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        chooseFormat(panel, 1);
        AlertAnswer alert;
        answerNextAlert(&alert);
        QTest::ignoreMessage(QtWarningMsg, "Maximum supported image dimension is 65500 pixels");
        const QString path = m_pictures + u"/genis.jpg"_s;
        saveThroughThePanel(panel, path);
        QVERIFY(alert.seen);
        QCOMPARE(alert.text, u"Kaydedilemedi"_s);
        QCOMPARE(alert.informativeText, u"Görüntü dosyası oluşturulamadı."_s);
        QCOMPARE(alert.buttons, QStringList { u"Tamam"_s });
        QVERIFY(!QFile::exists(path));
        QCOMPARE(m_editor->statusLabel()->text(), u"70000 × 2 piksel"_s);
    }

    void writeIsWhatTheDialogsOkDoes()
    {
        const QImage image = coordinateImage(300, 200);
        QVERIFY(open(image));
        const QString path = m_pictures + u"/dogrudan.png"_s;
        QVERIFY(m_editor->write(image, path, 0));
        QCOMPARE(QImage(path).convertToFormat(image.format()), image);
        QCOMPARE(m_editor->statusLabel()->text(), u"300 × 200 piksel • Kaydedildi: dogrudan.png"_s);
        const QString jpegPath = m_pictures + u"/dogrudan.jpg"_s;
        QVERIFY(m_editor->write(image, jpegPath, 1));
        QVERIFY(contents(jpegPath).startsWith("\xff\xd8\xff"));
    }

    void withoutAPicturesFolderTheDialogStartsAtHome()
    {
        setPicturesFolder(m_home.filePath(u"yok"_s));
        QVERIFY(open(coordinateImage(640, 480)));
        QFileDialog* panel = pressSave();
        QVERIFY(panel);
        QCOMPARE(panel->directory().absolutePath(), QDir::homePath());
        panel->reject();
        setPicturesFolder(m_pictures);
    }
};

QTEST_MAIN(TestEditorSave)
#include "tst_editorsave.moc"
