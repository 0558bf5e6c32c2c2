#include "EditorController.h"

#include "Alert.h"
#include "CropCanvas.h"
#include "EditorStatus.h"
#include "ImageFileWriter.h"
#include "SaveName.h"
#include "WindowHelpers.h"

#include <QAction>
#include <QBoxLayout>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <QWindow>
#include <algorithm>

using namespace Qt::StringLiterals;

EditorController::EditorController(const QImage& image, Clock clock, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_clock(clock ? std::move(clock) : Clock(&QDateTime::currentDateTime))
    , m_history(image)
{
    setWindowTitle(u"Vexet — Önizleme ve kırpma"_s);
    // The program lives in the tray: closing its last window must not end it.
    setAttribute(Qt::WA_QuitOnClose, false);
    resize(width, height);
    setMinimumSize(minimumWidth, minimumHeight);

    buildWindow();
    m_canvas->setImage(m_history.original());
    m_canvas->clearSelection();

    m_canvas->onSelection = [this](bool usable) { m_cropButton->setEnabled(usable); };
    m_canvas->onCopy = [this] { copyImage(); };

    m_canvas->setFocus(Qt::OtherFocusReason);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    updateStatus();
}

void EditorController::buildWindow()
{
    m_helpLabel = WindowHelpers::wrappingLabel(
        u"Kırpmak için resmin üzerinde sürükle. Esc seçimi temizler."_s, WindowHelpers::systemFont(13), this);

    m_cropButton = WindowHelpers::button(u"Seçimi kırp"_s, this, [this] { crop(); });
    m_undoButton = WindowHelpers::button(u"Geri al"_s, this, [this] { undoCrop(); });
    m_resetButton = WindowHelpers::button(u"Orijinale dön"_s, this, [this] { reset(); });
    m_copyButton = WindowHelpers::button(u"Kopyala"_s, this, [this] { copyImage(); });
    m_saveButton = WindowHelpers::button(u"Kaydet…"_s, this, [this] { saveImage(); });
    m_cropButton->setEnabled(false);
    m_undoButton->setEnabled(false);

    // The keys of "Kopyala" and "Kaydet…" belong to the window, so that pressing them leaves the
    // keyboard with the canvas (Escape keeps clearing the selection).
    auto* copyKey = new QAction(this);
    copyKey->setShortcut(QKeySequence::Copy);
    copyKey->setShortcutContext(Qt::WindowShortcut);
    connect(copyKey, &QAction::triggered, this, &EditorController::copyImage);
    addAction(copyKey);
    auto* saveKey = new QAction(this);
    saveKey->setShortcut(QKeySequence::Save);
    saveKey->setShortcutContext(Qt::WindowShortcut);
    connect(saveKey, &QAction::triggered, this, &EditorController::saveImage);
    addAction(saveKey);
    WindowHelpers::addWindowActions(this);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(buttonSpacing);
    for (QPushButton* button : { m_cropButton, m_undoButton, m_resetButton, m_copyButton, m_saveButton })
        buttons->addWidget(button);
    buttons->addStretch(1);

    m_canvas = new CropCanvas(this);
    m_canvas->setMinimumHeight(canvasMinimumHeight);
    m_canvas->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    m_statusLabel = WindowHelpers::wrappingLabel({}, WindowHelpers::systemFont(12), this);

    auto* stack = new QVBoxLayout;
    stack->setSpacing(spacing);
    stack->addWidget(m_helpLabel);
    stack->addLayout(buttons);
    stack->addWidget(m_canvas, 1);
    stack->addWidget(m_statusLabel);
    WindowHelpers::install(stack, this, padding);
    // Other windows leave their spare height at the bottom; here the canvas takes all of it.
    if (QLayoutItem* last = stack->itemAt(stack->count() - 1); last && last->spacerItem())
        delete stack->takeAt(stack->count() - 1);
}

void EditorController::showWindow()
{
    show();
    raise();
    activateWindow();
}

void EditorController::updateStatus(const QString& message)
{
    m_statusLabel->setText(EditorStatus::text(m_canvas->image().size(), message));
    m_undoButton->setEnabled(m_history.canUndo());
    // Also after a copy or a save, when a selection may still be drawn: the user drags again to crop.
    m_cropButton->setEnabled(false);
}

void EditorController::crop()
{
    const QImage cropped = m_canvas->croppedImage();
    if (cropped.isNull())
        return;
    m_history.push(m_canvas->image());
    m_canvas->setImage(cropped);
    m_canvas->clearSelection();
    updateStatus();
}

void EditorController::undoCrop()
{
    const std::optional<QImage> previous = m_history.takeLast();
    if (!previous)
        return;
    m_canvas->setImage(*previous);
    m_canvas->clearSelection();
    updateStatus();
}

void EditorController::reset()
{
    m_canvas->setImage(m_history.original());
    m_canvas->clearSelection();
    m_history.clear();
    updateStatus();
}

void EditorController::copyAutomatically(bool againAtFirstInput)
{
    copyImage();
    if (m_canvas->image().isNull() || !againAtFirstInput || !m_copyAgainAt.isEmpty())
        return;
    // The moments a desktop may first take clipboard data from the window: the keyboard coming to
    // it (KDE), the pointer entering it, a click or a key in it (wlroots: they carry the event
    // serial the data must come with).
    m_copyAgainAt = { QEvent::WindowActivate, QEvent::Enter, QEvent::MouseButtonPress, QEvent::KeyPress };
    // Input reaches the window's platform window before any widget inside it.
    winId();
    windowHandle()->installEventFilter(this);
}

bool EditorController::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == windowHandle() && m_copyAgainAt.remove(event->type())) {
        if (m_copyAgainAt.isEmpty())
            windowHandle()->removeEventFilter(this);
        // Only while the clipboard still holds our copy: never over what the user copied since.
        if (QGuiApplication::clipboard()->ownsClipboard())
            putOnClipboard();
    }
    return QWidget::eventFilter(watched, event);
}

void EditorController::copyImage()
{
    if (m_canvas->image().isNull())
        return;
    putOnClipboard();
    updateStatus(EditorStatus::copied());
}

void EditorController::putOnClipboard() const
{
    // One pixel per point, whatever the screen the image came from.
    QImage image = m_canvas->image();
    image.setDevicePixelRatio(1.0);
    QGuiApplication::clipboard()->setImage(image, QClipboard::Clipboard);
}

QStringList EditorController::formatNames()
{
    return { u"PNG (kayıpsız)"_s, u"JPEG"_s };
}

QStringList EditorController::formatFilters()
{
    const QStringList names = formatNames();
    return { names[0] + u" (*.png)"_s, names[1] + u" (*.jpg *.jpeg)"_s };
}

int EditorController::formatIndexOf(const QString& filter)
{
    // The dialog names the chosen filter in full or, with its details hidden, by name alone.
    const qsizetype index = std::max(formatFilters().indexOf(filter), formatNames().indexOf(filter));
    return index < 0 ? 0 : int(index);
}

QString EditorController::saveFolder()
{
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return !pictures.isEmpty() && QFileInfo(pictures).isDir() ? pictures : QDir::homePath();
}

void EditorController::saveImage()
{
    // The image saved is the one shown now, whatever happens to the editor while the dialog is open.
    const QImage image = m_canvas->image();
    if (image.isNull() || m_savePanel)
        return;

    auto* panel = new QFileDialog(this);
    panel->setWindowModality(Qt::WindowModal);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    // The format box shows "PNG (kayıpsız)" and "JPEG", not their patterns.
    panel->setOption(QFileDialog::HideNameFilterDetails);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setDirectory(saveFolder());
    panel->setNameFilters(formatFilters());
    panel->selectNameFilter(formatFilters().constFirst());
    panel->setDefaultSuffix(SaveName::extension(ImageFormat::png).mid(1));
    panel->setLabelText(QFileDialog::FileType, u"Dosya biçimi:"_s);
    panel->selectFile(SaveName::proposed(m_clock()));
    connect(panel, &QFileDialog::filterSelected, this,
        [this, panel] { formatChanged(formatIndexOf(panel->selectedNameFilter())); });
    connect(panel, &QDialog::finished, this,
        [this, panel, image](int result) { savePanelFinished(panel, image, result); });
    m_savePanel = panel;
    panel->open();
}

void EditorController::formatChanged(int index)
{
    if (!m_savePanel)
        return;
    const ImageFormat format = ImageFormats::at(index);
    m_savePanel->setDefaultSuffix(SaveName::extension(format).mid(1));
    const QFileInfo chosen(m_savePanel->selectedFiles().value(0));
    if (chosen.fileName().isEmpty() || chosen.isDir())
        return;
    m_savePanel->selectFile(SaveName::withFormat(chosen.fileName(), format));
}

void EditorController::savePanelFinished(QFileDialog* panel, const QImage& image, int result)
{
    m_savePanel.clear();
    const QString path = panel->selectedFiles().value(0);
    const int format = formatIndexOf(panel->selectedNameFilter());
    // Deleted only once the outcome has been shown: an alert runs its own event loop.
    if (result == QDialog::Accepted && !path.isEmpty())
        write(image, path, format);
    panel->deleteLater();
}

bool EditorController::write(const QImage& image, const QString& path, int formatIndex)
{
    const std::optional<ImageFileWriter::Failure> failure
        = ImageFileWriter::write(image, path, ImageFormats::at(formatIndex));
    if (failure) {
        Alert::show(u"Kaydedilemedi"_s,
            failure->kind == ImageFileWriter::Failure::encoding ? u"Görüntü dosyası oluşturulamadı."_s
                                                                : failure->systemReason);
        return false;
    }
    updateStatus(EditorStatus::saved(QFileInfo(path).fileName()));
    return true;
}

void EditorController::closeEvent(QCloseEvent* event)
{
    if (onClose)
        onClose();
    QWidget::closeEvent(event);
}
