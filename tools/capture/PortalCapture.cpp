#include "PortalCapture.h"

#include "CaptureTool.h"
#include "DesktopPicture.h"
#include "PointerMonitor.h"
#include "RegionCapture.h"

#include <QGuiApplication>
#include <QScreen>

using namespace Qt::StringLiterals;

PortalCapture::PortalCapture(const CaptureRequest& request)
    : m_request(request)
{
    m_answerPatience.setSingleShot(true);
    connect(&m_answerPatience, &QTimer::timeout, this, [this] {
        end(CaptureExitStatus::displayFailure, u"Masaüstü ekran resmi isteğine yanıt vermedi."_s);
    });
    connect(&m_screenshot, &PortalScreenshot::finished, this, &PortalCapture::pictureTaken);
}

PortalCapture::~PortalCapture() = default;

CaptureExitStatus PortalCapture::run(const CaptureRequest& request)
{
    // A native Wayland client, whose windows and pointer positions are in each monitor's own
    // pixels once multiplied by its scale; scale overrides of the session would break that.
    qputenv("QT_QPA_PLATFORM", "wayland");
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "1");
    qunsetenv("QT_SCALE_FACTOR");
    qunsetenv("QT_SCREEN_SCALE_FACTORS");
    const std::unique_ptr<QGuiApplication> application = CaptureTool::makeApplication();
    PortalCapture capture(request);
    return CaptureTool::runUntilFinished(capture);
}

void PortalCapture::start()
{
    const qsizetype monitors = QGuiApplication::screens().size();
    if (m_request.display && *m_request.display > monitors) {
        end(CaptureExitStatus::displayFailure, CaptureTool::noSuchMonitor(*m_request.display, monitors));
        return;
    }
    const bool interactive = m_request.mode == CaptureRequest::Mode::window;
    if (!interactive)
        m_answerPatience.start(answerPatienceMs);
    m_screenshot.take(interactive);
}

void PortalCapture::pictureTaken(const PortalScreenshot::Result& result)
{
    m_answerPatience.stop();
    switch (result.outcome) {
    case PortalScreenshot::Result::Outcome::failed:
        end(CaptureExitStatus::displayFailure, result.reason);
        return;
    case PortalScreenshot::Result::Outcome::declined:
        // In the desktop's own picker that is the user's cancel; otherwise the user said no.
        if (m_request.mode == CaptureRequest::Mode::window)
            end(CaptureExitStatus::cancelled);
        else
            end(CaptureExitStatus::refused, u"Masaüstü ekran resmi almaya izin vermedi."_s);
        return;
    case PortalScreenshot::Result::Outcome::picture:
        break;
    }
    if (m_request.mode == CaptureRequest::Mode::window) {
        const CaptureExitStatus status = CaptureTool::write(result.picture, m_request);
        end(status);
        return;
    }

    const QList<QScreen*> screens = QGuiApplication::screens();
    QList<DesktopPicture::Monitor> layout;
    for (const QScreen* screen : screens)
        layout.append({ screen->geometry(), screen->devicePixelRatio() });
    const DesktopPicture desktop(result.picture, layout);
    if (!desktop.isValid()) {
        end(CaptureExitStatus::displayFailure,
            u"Masaüstünün verdiği resim (%1 × %2) ekranların düzenine uymuyor."_s.arg(result.picture.width())
                .arg(result.picture.height()));
        return;
    }
    QList<QImage> monitors;
    for (qsizetype i = 0; i < desktop.monitorCount(); ++i)
        monitors.append(desktop.monitor(i));

    if (m_request.mode == CaptureRequest::Mode::region) {
        QList<RegionSelector::Sheet> sheets;
        for (qsizetype i = 0; i < screens.size(); ++i)
            sheets.append(RegionSelector::monitorSheet(screens.at(i), monitors.at(i)));
        m_region = std::make_unique<RegionCapture>(m_request, sheets, false);
        connect(m_region.get(), &RegionCapture::finished, this, &PortalCapture::end);
        m_region->start();
        return;
    }
    if (m_request.display) {
        writeMonitor(monitors, qsizetype(*m_request.display - 1));
        return;
    }
    m_pointer = std::make_unique<PointerMonitor>(monitors);
    connect(m_pointer.get(), &PointerMonitor::found, this,
        [this, monitors](qsizetype index) { writeMonitor(monitors, index); });
    m_pointer->start();
}

void PortalCapture::writeMonitor(const QList<QImage>& monitors, qsizetype index)
{
    if (index < 0 || index >= monitors.size()) {
        end(CaptureExitStatus::displayFailure, CaptureTool::noSuchMonitor(index + 1, monitors.size()));
        return;
    }
    end(CaptureTool::write(monitors.at(index), m_request));
}

void PortalCapture::end(CaptureExitStatus status, const QString& reason)
{
    if (m_ended)
        return;
    m_ended = true;
    Q_EMIT finished(status, reason);
}
