#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QPoint>
#include <QSize>
#include <QString>
#include <optional>

class PortalRequest;
struct PortalResponse;

// One session of org.freedesktop.portal.ScreenCast: the desktop's chooser, or the choice a restore
// token brings back, picks one monitor or window, and the desktop streams it through PipeWire.
// CreateSession, SelectSources, Start and OpenPipeWireRemote follow each other asynchronously on
// the main loop; opened() reports how it went, once. The session stays open until close(), the
// object's end, or the desktop's end of it (closed()).
class PortalScreenCast : public QObject {
    Q_OBJECT

public:
    enum class SourceType : uint { monitor = 1, window = 2 };
    struct Options {
        SourceType type = SourceType::monitor;
        bool cursor = true; // drawn into the frames, or left out
        QString restoreToken; // a choice remembered from an earlier session; empty: the desktop asks
        QString parentWindow; // the portal's handle of the window asking ("" for none)
    };
    struct Outcome {
        enum class Code { opened, cancelled, failed };
        Code code = Code::failed;
        QDBusUnixFileDescriptor remote; // the connection to PipeWire on which the stream is
        quint32 node = 0;
        std::optional<QPoint> position; // of a monitor, in the desktop's logical coordinates
        QSize size; // as the desktop describes the stream
        QString restoreToken; // brings this choice back next time; empty when the desktop gave none
        QString reason; // Turkish, for a failure
    };

    explicit PortalScreenCast(QDBusConnection bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);
    ~PortalScreenCast() override;

    void open(const Options& options);
    // Ends the session on the desktop's side; nothing is reported afterwards.
    void close();

Q_SIGNALS:
    void opened(const PortalScreenCast::Outcome& outcome);
    // The desktop ended the session after it had opened (the user stopped sharing, the source went).
    void closed();

private Q_SLOTS:
    void sessionClosed();

private:
    PortalRequest* newRequest();
    void selectSources();
    void start();
    void openRemote(Outcome started);
    void fail(const PortalResponse& response, const QString& step);
    void finish(Outcome outcome);

    QDBusConnection m_bus;
    Options m_options;
    PortalRequest* m_request = nullptr;
    QString m_session;
    bool m_finished = false;
    bool m_open = false;
};
