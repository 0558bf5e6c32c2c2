#include "PortalScreenshot.h"

#include "PortalRequest.h"

#include <QFile>
#include <QImageReader>
#include <QUrl>

using namespace Qt::StringLiterals;

PortalScreenshot::PortalScreenshot(QObject* parent)
    : QObject(parent)
{
}

PortalScreenshot::~PortalScreenshot() = default;

void PortalScreenshot::take(bool interactive, const QString& parentWindow)
{
    delete m_request;
    m_request = new PortalRequest(QDBusConnection::sessionBus(), this);
    connect(m_request, &PortalRequest::finished, this, [this](const PortalResponse& response) {
        Result result;
        if (response.code == PortalResponse::success) {
            result.picture = readAndRemove(response.results.value(u"uri"_s).toString(), &result.reason);
            result.outcome = result.picture.isNull() ? Result::Outcome::failed : Result::Outcome::picture;
        } else if (response.code == PortalResponse::cancelled) {
            result.outcome = Result::Outcome::declined;
        } else {
            result.reason = response.error.isEmpty() ? u"Masaüstü ekran resmini vermedi."_s : response.error;
        }
        Q_EMIT finished(result);
    });
    m_request->call(u"org.freedesktop.portal.Screenshot"_s, u"Screenshot"_s, { parentWindow },
        { { u"interactive"_s, interactive }, { u"modal"_s, true } });
}

QImage PortalScreenshot::readAndRemove(const QString& uri, QString* reason)
{
    const QUrl url(uri);
    if (!url.isLocalFile()) {
        *reason = u"Masaüstü ekran resmini okunabilir bir dosya olarak vermedi: %1"_s.arg(uri);
        return {};
    }
    const QString path = url.toLocalFile();
    QImageReader reader(path);
    QImage picture = reader.read();
    if (picture.isNull())
        *reason = u"Masaüstünün verdiği ekran resmi okunamadı (%1): %2"_s.arg(path, reader.errorString());
    QFile::remove(path);
    return picture;
}
