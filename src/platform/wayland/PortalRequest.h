#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

// What a desktop portal answered to one request.
struct PortalResponse {
    // The portal's codes: 0 success, 1 the user cancelled or refused, 2 anything else. A call that
    // failed before the portal could answer counts as 2.
    enum Code : uint {
        success = 0,
        cancelled = 1,
        other = 2,
    };
    uint code = other;
    QVariantMap results;
    // Why a request ended with `other` without the portal's answer (no portal, call refused, the
    // portal went away); empty when the portal answered itself.
    QString error;
};

// One request to org.freedesktop.portal.Desktop: the method is called without waiting, and the
// answer comes later through the Response signal of the request's object, on the main loop. The
// signal is subscribed before the call, at the path that the handle token makes known in advance.
// Ends exactly once with finished(); a request abandoned before that is closed on the portal's side.
class PortalRequest : public QObject {
    Q_OBJECT

public:
    static inline const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
    static inline const QString path = QStringLiteral("/org/freedesktop/portal/desktop");

    explicit PortalRequest(QDBusConnection bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);
    ~PortalRequest() override;

    // Calls interface.method(arguments..., options); the options get a fresh handle_token.
    void call(const QString& interface, const QString& method, const QVariantList& arguments,
        QVariantMap options = {});
    bool isFinished() const { return m_finished; }
    // An object path out of a result: a session handle comes as an object path from some portals and
    // as a string from others.
    static QString pathOf(const QVariant& value);
    const QString& requestPath() const { return m_requestPath; }

Q_SIGNALS:
    void finished(const PortalResponse& response);

private Q_SLOTS:
    void handleResponse(uint response, const QVariantMap& results);

private:
    void subscribe(const QString& requestPath);
    void unsubscribe();
    void callReturned(QDBusPendingCallWatcher* watcher);
    void finish(PortalResponse response);

    QDBusConnection m_bus;
    QString m_requestPath;
    QDBusServiceWatcher* m_portalWatcher = nullptr;
    bool m_subscribed = false;
    bool m_finished = false;
};
