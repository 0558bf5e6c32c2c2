#pragma once

#include "CropSelection.h"

#include <QImage>
#include <QWidget>
#include <functional>

// The view inside every editor window: one image scaled to fit, a crop rectangle dragged over it,
// everything outside the rectangle dimmed. It knows nothing of undo, files or the clipboard: it
// reports through onSelection and onCopy and answers croppedImage().
class CropCanvas : public QWidget {
    Q_OBJECT
public:
    explicit CropCanvas(QWidget* parent = nullptr);

    // Told after every change of the selection whether it is usable for cropping.
    std::function<void(bool usable)> onSelection;
    // Called when the copy key (Ctrl+C) reaches the canvas.
    std::function<void()> onCopy;

    const QImage& image() const { return m_image; }
    // Replaces the image shown; the selection is left to the caller.
    void setImage(const QImage& image);

    // The selection in view coordinates; empty when there is none.
    QRectF selection() const { return m_selection.rect(); }
    bool isDragging() const { return m_selection.isDragging(); }
    // Drops the selection and redraws, without reporting.
    void clearSelection();

    // The rectangle the image is drawn in; zero without an image or with no room.
    QRectF imageRect() const;

    // The selected part of the image in its own pixels; a null image when there is no usable
    // selection.
    QImage croppedImage() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void reportSelection(bool usable);
    // Tells assistive technology the image's size and the selection in the image's own pixels.
    void describe();

    QImage m_image;
    CropSelection m_selection;
};
