#include "VideoController.h"

#include "Alert.h"
#include "FileReveal.h"
#include "RecordingCancellation.h"
#include "SleepNotifier.h"
#include "VideoRecorder.h"
#include "VideoRegionPicker.h"
#include "VideoSavePanel.h"
#include "VideoSourceList.h"
#include "VideoSources.h"
#include "WindowHelpers.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int kindRegion = 1;
constexpr int kindWindow = 2;

QWidget* row(const QString& title, QWidget* control, QWidget* parent)
{
    auto* widget = new QWidget(parent);
    auto* layout = new QHBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    QLabel* label = WindowHelpers::wrappingLabel(title, WindowHelpers::systemFont(13), widget);
    label->setFixedWidth(95);
    layout->addWidget(label);
    layout->addWidget(control, 1);
    widget->setFixedWidth(425);
    return widget;
}

QComboBox* popup(const QStringList& items, QWidget* parent)
{
    auto* box = new QComboBox(parent);
    box->addItems(items);
    return box;
}

QString ready()
{
    return u"Kaynağı ve ses seçeneklerini belirle; kayıt dosyasının yerini seçerek başla."_s;
}

} // namespace

VideoController::VideoController(std::unique_ptr<VideoRecorder> recorder, VideoSources& sources,
    FileReveal& reveal, QSettings& store, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_recorder(std::move(recorder))
    , m_sources(sources)
    , m_reveal(reveal)
    , m_store(store)
{
    buildWindow(VideoOptions::saved(m_store));
    QPointer<VideoController> self(this);
    m_recorder->onStatus = [self](RecorderState state, const QString& text) {
        if (self)
            self->recorderStatus(state, text);
    };
    m_recorder->onFinish = [self](const Result<QString>& result) {
        if (self)
            self->finished(result);
    };
    m_regionPicker = new VideoRegionPicker(m_sources, this);
    connect(m_regionPicker, &VideoRegionPicker::finished, this, &VideoController::regionChosen);
    m_sleep = new SleepNotifier(this);
    connect(m_sleep, &SleepNotifier::willSleep, this, &VideoController::stopRecorder);
    // Leaving the program abandons a region selection.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive && m_selecting)
            cancelSelection();
    });
}

VideoController::~VideoController()
{
    m_recorder->onStatus = nullptr;
    m_recorder->onFinish = nullptr;
}

void VideoController::buildWindow(const VideoOptions& saved)
{
    setWindowTitle(u"Vexet — Video kaydı"_s);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setFixedSize(width, height);
    setAttribute(Qt::WA_QuitOnClose, false);

    m_kind = popup({ u"Tam ekran"_s, u"Seçili alan"_s, u"Pencere"_s }, this);
    m_source = new QComboBox(this);
    m_quality = popup({ u"1080p — en fazla 1920 × 1080"_s, u"4K — en fazla 3840 × 2160"_s,
                          u"Orijinal — H.264 sınırına kadar"_s },
        this);
    m_quality->setCurrentIndex(saved.quality);
    m_fps = popup({ u"30 FPS"_s, u"60 FPS"_s }, this);
    m_fps->setCurrentIndex(saved.fps == 60 ? 1 : 0);
    m_systemAudio = new QCheckBox(u"Sistem sesi"_s, this);
    m_systemAudio->setChecked(saved.systemAudio);
    m_microphone = new QCheckBox(u"Mikrofon (varsayılan giriş aygıtı)"_s, this);
    m_microphone->setChecked(saved.microphone);
    m_cursor = new QCheckBox(u"Fare imlecini göster"_s, this);
    m_cursor->setChecked(saved.cursor);
    connect(m_kind, &QComboBox::currentIndexChanged, this, &VideoController::sourceKindChanged);

    auto* stack = new QVBoxLayout;
    stack->setSpacing(14);
    stack->addWidget(
        WindowHelpers::wrappingLabel(u"Ekranını sesli kaydet"_s, WindowHelpers::systemFont(24, true), this));
    stack->addWidget(row(u"Kayıt türü"_s, m_kind, this));
    stack->addWidget(row(u"Kaynak"_s, m_source, this));
    stack->addWidget(row(u"Kalite"_s, m_quality, this));
    stack->addWidget(row(u"Akıcılık"_s, m_fps, this));
    stack->addWidget(m_systemAudio);
    stack->addWidget(m_microphone);
    stack->addWidget(m_cursor);
    stack->addWidget(
        WindowHelpers::wrappingLabel(u"MP4 • H.264 • Kayıttan önce 3 saniye geri sayım.\nHer iki ses "
                                     u"seçeneğini açabilir veya sessiz kayıt "
                                     u"yapabilirsin. Kulaklık kullanmak mikrofon yankısını azaltır."_s,
            WindowHelpers::systemFont(12), this));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(12);
    m_startButton = WindowHelpers::button(u"Kaydı başlat…"_s, this, [this] { startPressed(); });
    m_refreshButton = WindowHelpers::button(u"Kaynakları yenile"_s, this, [this] {
        // Where the desktop chooses, what it remembers is what there is to refresh.
        if (m_sources.desktopChooses())
            m_sources.forgetChoices();
        refresh();
    });
    buttons->addWidget(m_startButton);
    buttons->addWidget(m_refreshButton);
    buttons->addStretch(1);
    stack->addLayout(buttons);
    m_info = WindowHelpers::wrappingLabel(u"Kaynaklar yükleniyor…"_s, WindowHelpers::systemFont(12), this);
    stack->addWidget(m_info);
    WindowHelpers::install(stack, this, 24);
    WindowHelpers::addWindowActions(this);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

bool VideoController::recorderIdle() const
{
    return m_recorder->state() == RecorderState::Idle;
}

void VideoController::stopRecorder()
{
    m_recorder->stop();
}

void VideoController::toggle()
{
    if (!recorderIdle())
        m_recorder->stop();
    else if (m_selecting)
        cancelSelection();
    else if (!m_sheetOpen)
        present();
}

void VideoController::present()
{
    show();
    raise();
    activateWindow();
    if (recorderIdle() && !m_selecting && !m_sheetOpen && !m_loading)
        refresh();
}

void VideoController::refresh()
{
    if (!recorderIdle() || m_loading)
        return;
    m_loading = true;
    m_startButton->setEnabled(false);
    m_refreshButton->setEnabled(false);
    m_info->setText(u"Ekranlar ve pencereler yükleniyor…"_s);
    QTimer::singleShot(0, this, [this] {
        if (m_sources.desktopChooses()) {
            m_loading = false;
            m_refreshButton->setEnabled(true);
            sourceKindChanged();
            sourcesReady();
            return;
        }
        const Result<QList<VideoDisplay>> displays = m_sources.displays();
        const Result<QList<VideoWindow>> windows = m_sources.windows();
        m_loading = false;
        m_refreshButton->setEnabled(true);
        if (!displays.ok() || !windows.ok()) {
            m_info->setText(
                u"Kaynaklar alınamadı. Ekran kaydı iznini kontrol et, Vexet’i yeniden aç ve Kaynakları "
                u"yenile’ye bas.\n"_s
                + (displays.ok() ? windows.error() : displays.error()).localizedDescription());
            return;
        }
        m_displays = displays.value();
        m_windows = VideoSourceList::offered(
            windows.value(), static_cast<quint32>(QCoreApplication::applicationPid()));
        sourceKindChanged();
        sourcesReady();
    });
}

void VideoController::sourcesReady()
{
    m_info->setText(ready());
    // The window's main action is the one the keyboard reaches first.
    if (m_startButton->isEnabled())
        m_startButton->setFocus();
}

void VideoController::sourceKindChanged()
{
    m_source->clear();
    if (m_sources.desktopChooses()) {
        const QString remembered = m_sources.rememberedChoice(m_kind->currentIndex() == kindWindow);
        m_source->addItem(remembered.isEmpty() ? u"Kayıt başlarken masaüstü soracak"_s : remembered);
    } else if (m_kind->currentIndex() == kindWindow) {
        for (const VideoWindow& window : std::as_const(m_windows))
            m_source->addItem(VideoSourceList::windowTitle(window));
    } else {
        for (qsizetype i = 0; i < m_displays.size(); ++i)
            m_source->addItem(VideoSourceList::displayTitle(m_displays[i], static_cast<int>(i) + 1));
    }
    m_startButton->setEnabled(m_source->count() > 0);
}

void VideoController::startPressed()
{
    if (!recorderIdle() || m_selecting || m_sheetOpen || m_loading)
        return;
    if (m_sources.desktopChooses()) {
        askDesktop();
        return;
    }
    const int index = m_source->currentIndex();
    if (m_kind->currentIndex() == kindWindow) {
        if (index >= 0 && index < m_windows.size())
            chooseDestination(m_windows[index]);
        return;
    }
    if (index < 0 || index >= m_displays.size())
        return;
    if (m_kind->currentIndex() == kindRegion)
        selectRegion(m_displays[index]);
    else
        chooseDestination(m_displays[index]);
}

void VideoController::askDesktop()
{
    m_loading = true;
    m_startButton->setEnabled(false);
    m_refreshButton->setEnabled(false);
    m_info->setText(u"Masaüstü kaydedilecek kaynağı soruyor…"_s);
    const int kind = m_kind->currentIndex();
    QPointer<VideoController> self(this);
    m_sources.choose(
        kind == kindWindow, m_cursor->isChecked(), [self, kind](const Result<VideoTarget>& chosen) {
            if (!self)
                return;
            self->m_loading = false;
            self->m_refreshButton->setEnabled(true);
            self->sourceKindChanged();
            if (!chosen.ok()) {
                self->sourcesReady();
                const bool cancelled = RecordingCancellation::matches(chosen.error());
                self->m_info->setText(cancelled ? u"Kayıt iptal edildi."_s : u"Kaynak alınamadı."_s);
                if (!cancelled)
                    Alert::show(u"Video kaydı"_s, chosen.error().localizedDescription());
                return;
            }
            self->sourcesReady();
            const auto* display = std::get_if<VideoDisplay>(&chosen.value());
            if (kind == kindRegion && display)
                self->selectRegion(*display);
            else
                self->chooseDestination(chosen.value());
        });
}

void VideoController::selectRegion(const VideoDisplay& display)
{
    if (!m_regionPicker->start(display)) {
        m_recorder->release(display);
        Alert::show(u"Ekran bulunamadı"_s, u"Kaynakları yenileyip tekrar dene."_s);
        return;
    }
    m_selecting = true;
    hide();
}

void VideoController::regionChosen(const VideoDisplay& display, std::optional<QRectF> region, bool failed)
{
    m_selecting = false;
    show();
    raise();
    activateWindow();
    if (region) {
        chooseDestination(VideoRegion { display, *region });
        return;
    }
    m_recorder->release(display);
    if (failed)
        Alert::show(u"Ekran bulunamadı"_s, u"Kaynakları yenileyip tekrar dene."_s);
}

RegionSelector* VideoController::overlay() const
{
    return m_regionPicker->overlay();
}

void VideoController::cancelSelection()
{
    m_regionPicker->cancel();
}

VideoOptions VideoController::chosenOptions() const
{
    VideoOptions options;
    options.systemAudio = m_systemAudio->isChecked();
    options.microphone = m_microphone->isChecked();
    options.cursor = m_cursor->isChecked();
    options.fps = m_fps->currentIndex() == 1 ? 60 : 30;
    options.quality = m_quality->currentIndex();
    return options;
}

void VideoController::chooseDestination(const VideoTarget& target)
{
    QFileDialog* panel = VideoSavePanel::create(this);
    m_savePanel = panel;
    m_sheetOpen = true;
    connect(panel, &QFileDialog::finished, this, [this, panel, target](int result) {
        m_sheetOpen = false;
        const QStringList chosen = panel->selectedFiles();
        if (result != QDialog::Accepted || chosen.isEmpty()) {
            m_recorder->release(target);
            return; // nothing saved, nothing recorded
        }
        startRecording(target, chosen.first());
    });
    panel->open();
}

void VideoController::startRecording(const VideoTarget& target, const QString& destination)
{
    const VideoOptions options = chosenOptions();
    options.save(m_store);
    m_suspendedWindows.hide();
    m_recorder->start(target, options, destination);
}

void VideoController::recorderStatus(RecorderState state, const QString& text)
{
    m_recordingState = state;
    m_info->setText(text);
    if (onStatus)
        onStatus(state != RecorderState::Idle, text);
}

void VideoController::finished(const Result<QString>& result)
{
    const bool cancelled = !result.ok() && RecordingCancellation::matches(result.error());
    if (m_pendingQuit) {
        if (!result.ok() && !cancelled)
            Alert::show(u"Kayıt tamamlanamadı"_s, result.error().localizedDescription());
        if (onTerminateReply)
            onTerminateReply(true);
        return;
    }
    m_suspendedWindows.show();
    if (result.ok()) {
        m_info->setText(u"Kaydedildi: "_s + QFileInfo(result.value()).fileName());
        m_reveal.reveal(result.value());
    } else if (cancelled) {
        m_info->setText(u"Kayıt iptal edildi."_s);
    } else {
        m_info->setText(u"Kayıt tamamlanamadı."_s);
        Alert::show(u"Video kaydı"_s, result.error().localizedDescription());
    }
}
