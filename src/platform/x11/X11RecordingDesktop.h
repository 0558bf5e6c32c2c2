#pragma once

#include "RecordingDesktopInterface.h"
#include "X11Connection.h"
#include "X11Outputs.h"
#include "X11Windows.h"

#include <QByteArray>

// The recorder's view of the X desktop, on a connection of its own. Displays are RandR outputs and
// windows X windows, by their ids; the capture connects to the same display itself.
class X11RecordingDesktop : public RecordingDesktopInterface {
public:
    // Connects to the named display, or to $DISPLAY.
    explicit X11RecordingDesktop(const QByteArray& displayName = {});

    bool isOpen() const { return m_connection.isOpen(); }

    std::optional<CaptureStream> stream(quint32 sourceId) override;
    std::optional<QRect> displayGeometry(quint32 outputId) override;
    std::optional<QRect> windowGeometry(quint32 windowId) override;
    std::unique_ptr<ErrorWatch> watchCapture(quint32 sourceId, bool window, ErrorHandler handler) override;
    void release(quint32) override { }

private:
    QByteArray m_displayName;
    X11Connection m_connection;
    X11Outputs m_outputs;
    X11Windows m_windows;
};
