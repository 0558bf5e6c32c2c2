#pragma once

// The two formats a screenshot is saved in: PNG (lossless) and JPEG.
enum class ImageFormat {
    png,
    jpeg,
};

namespace ImageFormats {

// The format at a position of the save dialog's format choice: 1 is JPEG, any other position PNG.
constexpr ImageFormat at(int index)
{
    return index == 1 ? ImageFormat::jpeg : ImageFormat::png;
}

} // namespace ImageFormats
