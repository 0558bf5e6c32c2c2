#pragma once

#include <QImage>
#include <QRect>
#include <QString>

// Pictures of what the compositor shows, taken with grim. Note that the pointer is drawn into
// them: park it (SwayIpc::parkPointer) where it does not matter.
class CompositorPictures {
public:
    // One output, in its device pixels (exact).
    QImage output(const QString& name);
    // A rectangle of the desktop in logical coordinates. With outputs of different scales grim
    // draws the whole layout at the highest scale, filtering the others: not exact there.
    QImage region(const QRect& rect);
    // The same, once two pictures in a row agree (what is shown has settled); a null image if
    // that does not happen within the time.
    QImage stableOutput(const QString& name, int timeoutMs = 20000);
    QImage stableRegion(const QRect& rect, int timeoutMs = 20000);

    // Waits until the output shows exactly `expected` (alpha aside); what still differs if it
    // does not within the time, an empty text if it does.
    QString waitForOutput(const QString& name, const QImage& expected, int timeoutMs = 20000);
    // How two pictures differ ("12 pixels differ, within 40,8 4x3"); empty if they do not.
    static QString difference(const QImage& shown, const QImage& expected);

    QString errorString() const { return m_error; }

private:
    QImage grim(const QStringList& arguments);
    QImage stable(const QStringList& arguments, int timeoutMs);

    QString m_error;
};
