#include "PortalVideoDesktop.h"

#include "DesktopPicture.h"
#include "PortalScreenshot.h"
#include "RecordingCancellation.h"
#include "RecordingTexts.h"
#include "StreamScreen.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

QString tokenKey(bool window)
{
    return window ? u"videoSource/windowToken"_s : u"videoSource/displayToken"_s;
}

QString nameKey(bool window)
{
    return window ? u"videoSource/windowName"_s : u"videoSource/displayName"_s;
}

QList<DesktopPicture::Monitor> screenLayout()
{
    QList<DesktopPicture::Monitor> layout;
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* screen : screens)
        layout.append({ screen->geometry(), screen->devicePixelRatio() });
    return layout;
}

} // namespace

class PortalVideoDesktop::Watch : public RecordingDesktopInterface::ErrorWatch {
public:
    Watch(PortalVideoDesktop* desktop, quint32 id)
        : m_desktop(desktop)
        , m_id(id)
    {
    }
    ~Watch() override
    {
        if (Cast* cast = m_desktop ? m_desktop->cast(m_id) : nullptr)
            cast->lost = nullptr;
    }

private:
    QPointer<PortalVideoDesktop> m_desktop;
    quint32 m_id;
};

PortalVideoDesktop::PortalVideoDesktop(QSettings& store, QObject* parent)
    : QObject(parent)
    , m_store(store)
{
}

PortalVideoDesktop::~PortalVideoDesktop() = default;

QString PortalVideoDesktop::rememberedChoice(bool window) const
{
    if (m_store.value(tokenKey(window)).toString().isEmpty())
        return {};
    return m_store.value(nameKey(window)).toString();
}

void PortalVideoDesktop::forgetChoices()
{
    for (const bool window : { false, true }) {
        m_store.remove(tokenKey(window));
        m_store.remove(nameKey(window));
    }
}

void PortalVideoDesktop::choose(
    bool window, bool cursor, std::function<void(const Result<VideoTarget>&)> done)
{
    const quint32 id = ++m_lastId;
    Cast& cast = m_casts[id];
    cast.portal = std::make_unique<PortalScreenCast>();
    cast.window = window;
    const QString token = m_store.value(tokenKey(window)).toString();
    connect(cast.portal.get(), &PortalScreenCast::opened, this,
        [this, id, window, cursor, token, done](const PortalScreenCast::Outcome& outcome) {
            if (outcome.code == PortalScreenCast::Outcome::Code::failed && !token.isEmpty()) {
                // The remembered choice was turned down: forget it and let the desktop ask.
                release(id);
                m_store.remove(tokenKey(window));
                choose(window, cursor, done);
                return;
            }
            opened(id, window, outcome, done);
        });
    connect(cast.portal.get(), &PortalScreenCast::closed, this, [this, id] { ended(id); });
    cast.portal->open({ window ? PortalScreenCast::SourceType::window : PortalScreenCast::SourceType::monitor,
        cursor, token, QString() });
}

void PortalVideoDesktop::opened(quint32 id, bool window, const PortalScreenCast::Outcome& outcome,
    const std::function<void(const Result<VideoTarget>&)>& done)
{
    Cast* found = cast(id);
    if (!found)
        return;
    if (outcome.code != PortalScreenCast::Outcome::Code::opened) {
        release(id);
        done(outcome.code == PortalScreenCast::Outcome::Code::cancelled ? RecordingCancellation::error()
                                                                        : videoError(outcome.reason));
        return;
    }
    found->stream = outcome;
    if (window) {
        found->pixels = outcome.size;
        if (!outcome.restoreToken.isEmpty()) {
            m_store.setValue(tokenKey(true), outcome.restoreToken);
            m_store.setValue(nameKey(true), u"Son seçilen pencere"_s);
        }
        done(VideoTarget(VideoWindow { id, QString(), QString(), QRect(QPoint(), outcome.size), 0 }));
        return;
    }
    // The frames have the monitor's own pixels: its logical size times its scale, whichever of the
    // two the desktop describes the stream by.
    const QList<QScreen*> screens = QGuiApplication::screens();
    const std::optional<qsizetype> index = StreamScreen::find(screenLayout(), outcome.position, outcome.size);
    const QScreen* screen = index ? screens.at(*index) : nullptr;
    found->pixels
        = screen ? (QSizeF(screen->geometry().size()) * screen->devicePixelRatio()).toSize() : outcome.size;
    const QString name = screen ? screen->name() : u"Ekran"_s;
    if (!outcome.restoreToken.isEmpty()) {
        m_store.setValue(tokenKey(false), outcome.restoreToken);
        m_store.setValue(nameKey(false),
            u"%1 (%2 × %3)"_s.arg(name).arg(found->pixels.width()).arg(found->pixels.height()));
    }
    done(VideoTarget(
        VideoDisplay { id, name, QRect(screen ? screen->geometry().topLeft() : QPoint(), found->pixels),
            screen ? screen->devicePixelRatio() : 1.0 }));
}

void PortalVideoDesktop::ended(quint32 id)
{
    Cast* found = cast(id);
    if (!found)
        return;
    found->ended = true;
    if (found->lost)
        found->lost(true, RecordingTexts::sourceEnded());
}

PortalVideoDesktop::Cast* PortalVideoDesktop::cast(quint32 sourceId)
{
    const auto it = m_casts.find(sourceId);
    return it == m_casts.end() ? nullptr : &it->second;
}

void PortalVideoDesktop::screenPicture(QScreen* screen, std::function<void(const QImage&)> done)
{
    auto* screenshot = new PortalScreenshot(this);
    connect(screenshot, &PortalScreenshot::finished, this,
        [screenshot, screen = QPointer(screen), done](const PortalScreenshot::Result& result) {
            screenshot->deleteLater();
            const qsizetype index = screen ? QGuiApplication::screens().indexOf(screen.data()) : -1;
            if (result.outcome != PortalScreenshot::Result::Outcome::picture || index < 0) {
                done(QImage());
                return;
            }
            done(DesktopPicture(result.picture, screenLayout()).monitor(index));
        });
    screenshot->take(false);
}

std::optional<CaptureStream> PortalVideoDesktop::stream(quint32 sourceId)
{
    const Cast* found = cast(sourceId);
    if (!found || found->ended)
        return std::nullopt;
    return CaptureStream { CaptureStream::Kind::pipeWire, QString(), found->stream.remote.fileDescriptor(),
        found->stream.node };
}

std::optional<QRect> PortalVideoDesktop::displayGeometry(quint32 sourceId)
{
    const Cast* found = cast(sourceId);
    if (!found || found->ended || found->window)
        return std::nullopt;
    return QRect(QPoint(), found->pixels);
}

std::optional<QRect> PortalVideoDesktop::windowGeometry(quint32 sourceId)
{
    const Cast* found = cast(sourceId);
    if (!found || found->ended || !found->window)
        return std::nullopt;
    return QRect(QPoint(), found->pixels);
}

std::unique_ptr<RecordingDesktopInterface::ErrorWatch> PortalVideoDesktop::watchCapture(
    quint32 sourceId, bool, ErrorHandler handler)
{
    if (Cast* found = cast(sourceId))
        found->lost = std::move(handler);
    return std::make_unique<Watch>(this, sourceId);
}

void PortalVideoDesktop::release(quint32 sourceId)
{
    const auto it = m_casts.find(sourceId);
    if (it == m_casts.end())
        return;
    PortalScreenCast* portal = it->second.portal.release();
    m_casts.erase(it);
    // It may be reporting right now.
    portal->close();
    portal->disconnect(this);
    portal->deleteLater();
}
