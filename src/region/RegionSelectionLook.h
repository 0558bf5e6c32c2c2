#pragma once

#include <QString>

// How a region overlay looks. The screenshot overlay dims the frozen desktop, lights the selection
// with a thin outline and shows its size in pixels beside it; the recording overlay dims a little
// less, strokes the selection with a wider line and tells what to do in its top-left corner.
struct RegionSelectionLook {
    // Alpha of the black laid over the frozen picture outside the selection (0-255).
    int dimming = 120;
    // The white line: around the selection, leaving every pixel inside it as it is, or centred on
    // its edge.
    enum class Outline { around, onEdge };
    Outline outline = Outline::around;
    // Width of the white line, in logical pixels.
    int outlineWidth = 1;
    // "W × H" beside the selection.
    bool sizeLabel = true;
    // Drawn at the top-left corner; none when empty.
    QString hint;

    static RegionSelectionLook screenshot() { return {}; }
    static RegionSelectionLook recording()
    {
        return { qRound(0.38 * 255), Outline::onEdge, 2, false,
            QStringLiteral("Kaydedilecek alanı sürükleyerek seç • Esc: iptal") };
    }
};
