#include "ScreenshotBackend.h"

#include <cstdio>

ScreenshotBackend::ScreenshotBackend(uint response, QObject* object)
    : QDBusAbstractAdaptor(object)
    , m_response(response)
{
}

AccessBackend::AccessBackend(QObject* object)
    : QDBusAbstractAdaptor(object)
{
}

uint ScreenshotBackend::Screenshot(const QDBusObjectPath&, const QString& appId, const QString& parentWindow,
    const QVariantMap& options, QVariantMap& results)
{
    ++m_requests;
    std::fprintf(stderr, "vexet-test-portal: screenshot for \"%s\" (parent \"%s\", interactive %d): %u\n",
        qPrintable(appId), qPrintable(parentWindow), options.value(QStringLiteral("interactive")).toBool(),
        m_response);
    results.clear();
    return m_response;
}

uint AccessBackend::AccessDialog(const QDBusObjectPath&, const QString&, const QString&, const QString&,
    const QString&, const QString&, const QVariantMap&, QVariantMap& results)
{
    results.clear();
    return 0;
}
