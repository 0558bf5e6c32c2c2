#pragma once

#include "ImageHistory.h"

#include <QDateTime>
#include <QEvent>
#include <QFileDialog>
#include <QImage>
#include <QPointer>
#include <QSet>
#include <QWidget>
#include <functional>

class CropCanvas;
class QLabel;
class QPushButton;

// The window every screenshot opens in: a preview with crop, undo, return to the captured image,
// copy to the clipboard and save as PNG or JPEG. The application owns it while it is open and is
// told through onClose when it closes.
class EditorController : public QWidget {
    Q_OBJECT
public:
    static constexpr int width = 1000;
    static constexpr int height = 700;
    static constexpr int minimumWidth = 780;
    static constexpr int minimumHeight = 450;
    static constexpr int padding = 18;
    static constexpr int spacing = 12;
    static constexpr int buttonSpacing = 10;
    static constexpr int canvasMinimumHeight = 240;

    // The time the proposed file name is made of.
    using Clock = std::function<QDateTime()>;

    // An image without a bitmap (a null image) still opens a window, an empty one.
    explicit EditorController(const QImage& image, Clock clock = {}, QWidget* parent = nullptr);

    // Called when the window is about to close.
    std::function<void()> onClose;

    // Brings the window to the front and gives it the keyboard.
    void showWindow();

    // Crops to the canvas's selection; nothing without a usable selection.
    void crop();
    // Goes back one crop; nothing when there is none.
    void undoCrop();
    // Goes back to the captured image and forgets every crop.
    void reset();
    // Puts the whole current image on the clipboard.
    void copyImage();
    // The copy made right after the window appears. Some desktops (Wayland) take clipboard data only
    // from a window that has the keyboard or from a program that has had the user's input, which a
    // window that just appeared may not have had: then the copy is made again at the window's first
    // activation, pointer entry, click and key, unless something else was copied meanwhile.
    void copyAutomatically(bool againAtFirstInput);
    // Opens the save dialog on this window for the current image.
    void saveImage();
    // The save dialog's format choice moved to index (0 PNG, 1 JPEG): the name follows.
    void formatChanged(int index);
    // Saves image at path in the format at formatIndex, as the save dialog's OK does. A failure is
    // shown in an alert and changes nothing; returns whether the file was written.
    bool write(const QImage& image, const QString& path, int formatIndex);

    // The save dialog's format choices, PNG first: "PNG (kayıpsız)" and "JPEG", and the same with
    // their file patterns.
    static QStringList formatNames();
    static QStringList formatFilters();
    // The position of a format choice named either way; PNG's for anything else.
    static int formatIndexOf(const QString& filter);

    CropCanvas* canvas() const { return m_canvas; }
    QPushButton* cropButton() const { return m_cropButton; }
    QPushButton* undoButton() const { return m_undoButton; }
    QPushButton* resetButton() const { return m_resetButton; }
    QPushButton* copyButton() const { return m_copyButton; }
    QPushButton* saveButton() const { return m_saveButton; }
    QLabel* helpLabel() const { return m_helpLabel; }
    QLabel* statusLabel() const { return m_statusLabel; }
    // The save dialog while it is open.
    QFileDialog* savePanel() const { return m_savePanel; }
    const QImage& original() const { return m_history.original(); }
    const QList<QImage>& undoImages() const { return m_history.undoImages(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildWindow();
    void updateStatus(const QString& message = {});
    void putOnClipboard() const;
    void savePanelFinished(QFileDialog* panel, const QImage& image, int result);
    static QString saveFolder();

    Clock m_clock;
    ImageHistory m_history;
    CropCanvas* m_canvas = nullptr;
    QPushButton* m_cropButton = nullptr;
    QPushButton* m_undoButton = nullptr;
    QPushButton* m_resetButton = nullptr;
    QPushButton* m_copyButton = nullptr;
    // The first events at which the automatic copy is made again.
    QSet<QEvent::Type> m_copyAgainAt;
    QPushButton* m_saveButton = nullptr;
    QLabel* m_helpLabel = nullptr;
    QLabel* m_statusLabel = nullptr;
    QPointer<QFileDialog> m_savePanel;
};
