#pragma once

#include "PortalScreenCast.h"
#include "RecordingDesktopInterface.h"
#include "VideoSources.h"

#include <QObject>
#include <QRect>
#include <map>
#include <memory>

class PortalScreenshot;
class QSettings;

// Recording on a desktop that shares its screens through org.freedesktop.portal.ScreenCast. The
// desktop's chooser picks the monitor or window; its restore token is kept in the settings store
// so that the chooser is shown once, not at every recording. Each choice is a ScreenCast session
// whose PipeWire stream the recording captures; the session is known to the recorder by an id of
// its own and stays open until the recorder releases it (or this object ends).
class PortalVideoDesktop : public QObject, public VideoSources, public RecordingDesktopInterface {
    Q_OBJECT

public:
    explicit PortalVideoDesktop(QSettings& store, QObject* parent = nullptr);
    ~PortalVideoDesktop() override;

    Result<QList<VideoDisplay>> displays() override { return QList<VideoDisplay>(); }
    Result<QList<VideoWindow>> windows() override { return QList<VideoWindow>(); }
    bool desktopChooses() const override { return true; }
    QString rememberedChoice(bool window) const override;
    void forgetChoices() override;
    void choose(bool window, bool cursor, std::function<void(const Result<VideoTarget>&)> done) override;
    void screenPicture(QScreen* screen, std::function<void(const QImage&)> done) override;

    std::optional<CaptureStream> stream(quint32 sourceId) override;
    std::optional<QRect> displayGeometry(quint32 sourceId) override;
    std::optional<QRect> windowGeometry(quint32 sourceId) override;
    std::unique_ptr<ErrorWatch> watchCapture(quint32 sourceId, bool window, ErrorHandler handler) override;
    void release(quint32 sourceId) override;

    // Sessions open now, for the tests.
    qsizetype openSessions() const { return qsizetype(m_casts.size()); }

private:
    struct Cast {
        std::unique_ptr<PortalScreenCast> portal;
        PortalScreenCast::Outcome stream;
        QSize pixels; // the frames' size
        bool window = false;
        bool ended = false; // the desktop closed the session
        ErrorHandler lost; // told when the desktop closes the session
    };
    class Watch;

    void opened(quint32 id, bool cursor, const PortalScreenCast::Outcome& outcome,
        const std::function<void(const Result<VideoTarget>&)>& done);
    void ended(quint32 id);
    Cast* cast(quint32 sourceId);

    QSettings& m_store;
    std::map<quint32, Cast> m_casts;
    quint32 m_lastId = 0;
};
