#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QVariantMap>

// A desktop portal backend for tests (org.freedesktop.impl.portal.Screenshot and .Access) that
// answers every screenshot request with a fixed response code and no picture: what a desktop
// does whose user refused (non-interactive) or closed the picker (interactive). It stands behind
// the real xdg-desktop-portal frontend; sway's own backend never refuses, so this is how a
// refusal is made there.
class ScreenshotBackend : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.impl.portal.Screenshot")
    // Below 2: the frontend asks no permission of its own first.
    Q_PROPERTY(uint version READ version)

public:
    ScreenshotBackend(uint response, QObject* object);

    uint version() const { return 1; }
    int requests() const { return m_requests; }

public Q_SLOTS:
    uint Screenshot(const QDBusObjectPath& handle, const QString& appId, const QString& parentWindow,
        const QVariantMap& options, QVariantMap& results);

private:
    uint m_response;
    int m_requests = 0;
};

// The Access side, which the frontend needs before it offers the Screenshot portal at all: it
// grants whatever is asked.
class AccessBackend : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.impl.portal.Access")

public:
    explicit AccessBackend(QObject* object);

public Q_SLOTS:
    uint AccessDialog(const QDBusObjectPath& handle, const QString& appId, const QString& parentWindow,
        const QString& title, const QString& subtitle, const QString& body, const QVariantMap& options,
        QVariantMap& results);
};
