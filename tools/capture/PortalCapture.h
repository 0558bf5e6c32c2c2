#pragma once

#include "CaptureRequest.h"
#include "CaptureToolProtocol.h"
#include "PortalScreenshot.h"

#include <QObject>
#include <QTimer>
#include <memory>

class PointerMonitor;
class RegionCapture;

// vexet-capture on a Wayland desktop, through org.freedesktop.portal.Screenshot: a monitor is cut
// from the portal's picture of all monitors, an area is dragged on Vexet's own overlay over that
// frozen picture, and a window is chosen in the desktop's own picker. Nothing goes through X.
class PortalCapture : public QObject {
    Q_OBJECT

public:
    // How long a picture without any dialog may take before the desktop counts as not answering.
    static constexpr int answerPatienceMs = 120000;

    explicit PortalCapture(const CaptureRequest& request);
    ~PortalCapture() override;

    // Starts Qt on the Wayland desktop and takes the picture.
    static CaptureExitStatus run(const CaptureRequest& request);
    void start();

Q_SIGNALS:
    // reason: empty unless the status is a failure.
    void finished(CaptureExitStatus status, const QString& reason);

private:
    void pictureTaken(const PortalScreenshot::Result& result);
    void writeMonitor(const QList<QImage>& monitors, qsizetype index);
    void end(CaptureExitStatus status, const QString& reason = {});

    CaptureRequest m_request;
    PortalScreenshot m_screenshot;
    QTimer m_answerPatience;
    std::unique_ptr<PointerMonitor> m_pointer;
    std::unique_ptr<RegionCapture> m_region;
    bool m_ended = false;
};
