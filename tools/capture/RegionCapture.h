#pragma once

#include "CaptureRequest.h"
#include "CaptureToolProtocol.h"
#include "RegionSelector.h"

#include <QObject>
#include <memory>

class InputGrab;

// The region mode of vexet-capture on both kinds of desktop: the frozen picture under the region
// selector, and the chosen pixels written to the file. On X11 the desktop is one unmanaged window
// that takes the keyboard and pointer; on Wayland every monitor has a full-screen window of its own.
// Ends with finished(); the file is written by then.
class RegionCapture : public QObject {
    Q_OBJECT

public:
    RegionCapture(const CaptureRequest& request, QList<RegionSelector::Sheet> sheets, bool grabInput);
    ~RegionCapture() override;

    void start();

Q_SIGNALS:
    // reason: empty unless the status is a failure.
    void finished(CaptureExitStatus status, const QString& reason);

private:
    void selected(qsizetype sheet, std::optional<QRect> pixels);
    void end(CaptureExitStatus status, const QString& reason = {});

    CaptureRequest m_request;
    RegionSelector m_selector;
    std::unique_ptr<InputGrab> m_grab;
    bool m_ended = false;
};
