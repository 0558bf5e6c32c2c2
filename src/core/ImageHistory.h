#pragma once

#include <QImage>
#include <QList>
#include <optional>

// The captured image of an editor and the earlier images its crops can go back to. The captured
// image never changes; the earlier images are kept oldest first, at most limit of them.
class ImageHistory {
public:
    static constexpr qsizetype limit = 20;

    explicit ImageHistory(QImage original = {});

    const QImage& original() const { return m_original; }
    const QList<QImage>& undoImages() const { return m_undoImages; }
    bool canUndo() const { return !m_undoImages.isEmpty(); }

    // Remembers image as the step before a new one; beyond the limit the oldest step is forgotten.
    void push(const QImage& image);

    // The most recent step, removed from the history; none when there is nothing to undo.
    std::optional<QImage> takeLast();

    // Forgets every step: going back to the captured image cannot be undone.
    void clear();

private:
    QImage m_original;
    QList<QImage> m_undoImages;
};
