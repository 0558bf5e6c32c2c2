#include "ImageHistory.h"

#include <utility>

ImageHistory::ImageHistory(QImage original)
    : m_original(std::move(original))
{
}

void ImageHistory::push(const QImage& image)
{
    m_undoImages.append(image);
    while (m_undoImages.size() > limit)
        m_undoImages.removeFirst();
}

std::optional<QImage> ImageHistory::takeLast()
{
    if (m_undoImages.isEmpty())
        return std::nullopt;
    return m_undoImages.takeLast();
}

void ImageHistory::clear()
{
    m_undoImages.clear();
}
