#include "RegionCapture.h"

#include "CaptureFileWriter.h"
#include "InputGrab.h"
#include "RegionSelectionWindow.h"

RegionCapture::RegionCapture(
    const CaptureRequest& request, QList<RegionSelector::Sheet> sheets, bool grabInput)
    : m_request(request)
    , m_selector(std::move(sheets), RegionSelectionLook::screenshot(), 1)
{
    connect(&m_selector, &RegionSelector::finished, this, &RegionCapture::selected);
    if (grabInput && m_selector.sheetCount() > 0) {
        RegionSelectionWindow* window = m_selector.window(0);
        m_grab = std::make_unique<InputGrab>(*window);
        connect(window, &RegionSelectionWindow::exposed, m_grab.get(), &InputGrab::start);
        connect(m_grab.get(), &InputGrab::failed, this,
            [this](const QString& reason) { end(CaptureExitStatus::displayFailure, reason); });
    }
}

RegionCapture::~RegionCapture() = default;

void RegionCapture::start()
{
    m_selector.present();
}

void RegionCapture::selected(qsizetype sheet, std::optional<QRect> pixels)
{
    if (m_grab)
        m_grab->release();
    if (!pixels) {
        end(CaptureExitStatus::cancelled);
        return;
    }
    QString error;
    const QImage picture = m_selector.window(sheet)->picture().copy(*pixels);
    if (CaptureFileWriter::write(picture, m_request.path, m_request.format, &error))
        end(CaptureExitStatus::written);
    else
        end(CaptureExitStatus::writeFailure, error);
}

void RegionCapture::end(CaptureExitStatus status, const QString& reason)
{
    if (m_ended)
        return;
    m_ended = true;
    m_selector.cancel(); // hides the windows if the selection is still up
    Q_EMIT finished(status, reason);
}
