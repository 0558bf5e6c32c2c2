#include "VideoController.h"

#include "Alert.h"
#include "Beeper.h"
#include "FileReveal.h"
#include "RecordingCancellation.h"
#include "RegionClip.h"
#include "RegionSelector.h"
#include "SleepNotifier.h"
#include "VideoRecorder.h"
#include "VideoSourceList.h"
#include "VideoSources.h"
#include "WindowHelpers.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
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

QScreen* screenOf(const VideoDisplay& display)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (QScreen* screen : screens) {
        if (screen->geometry().topLeft() == display.geometry.topLeft())
            return screen;
    }
    return nullptr;
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
    m_refreshButton = WindowHelpers::button(u"Kaynakları yenile"_s, this, [this] { refresh(); });
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
        m_info->setText(u"Kaynağı ve ses seçeneklerini belirle; kayıt dosyasının yerini seçerek başla."_s);
    });
}

void VideoController::sourceKindChanged()
{
    m_source->clear();
    if (m_kind->currentIndex() == kindWindow) {
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

void VideoController::selectRegion(const VideoDisplay& display)
{
    QScreen* screen = screenOf(display);
    if (!screen) {
        Alert::show(u"Ekran bulunamadı"_s, u"Kaynakları yenileyip tekrar dene."_s);
        return;
    }
    m_selecting = true;
    hide();
    // The monitor as it looked when the selection began, so the overlay shows it dimmed whether or
    // not the desktop composites translucent windows.
    const RegionSelector::Sheet sheet = RegionSelector::monitorSheet(screen, screen->grabWindow(0).toImage());
    m_overlay
        = new RegionSelector({ sheet }, RegionSelectionLook::recording(), RegionClip::minimumSide, this);
    connect(m_overlay, &RegionSelector::refused, this, [] { Beeper::beep(); });
    connect(m_overlay, &RegionSelector::finished, this,
        [this, display, ratio = screen->devicePixelRatio()](qsizetype, std::optional<QRect> pixels) {
            if (m_overlay)
                m_overlay->deleteLater();
            m_overlay = nullptr;
            m_selecting = false;
            show();
            raise();
            activateWindow();
            // The region is kept in the monitor's points.
            if (pixels)
                chooseDestination(VideoRegion {
                    display, QRectF(QPointF(pixels->topLeft()) / ratio, QSizeF(pixels->size()) / ratio) });
        });
    m_overlay->present();
}

void VideoController::cancelSelection()
{
    if (m_overlay)
        m_overlay->cancel();
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

QString VideoController::proposedFileName(const QDateTime& now)
{
    return u"Vexet_"_s + now.toString(u"yyyy-MM-dd_HH-mm-ss"_s) + u".mp4"_s;
}

void VideoController::chooseDestination(const VideoTarget& target)
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    if (!QFileInfo(folder).isDir())
        folder = QDir::homePath();
    auto* panel = new QFileDialog(this, u"Video kaydını nereye kaydedelim?"_s);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setNameFilter(u"MPEG-4 (*.mp4)"_s);
    panel->setDefaultSuffix(u"mp4"_s);
    panel->setDirectory(folder);
    panel->selectFile(proposedFileName(QDateTime::currentDateTime()));
    panel->setWindowModality(Qt::WindowModal);
    m_savePanel = panel;
    m_sheetOpen = true;
    connect(panel, &QFileDialog::finished, this, [this, panel, target](int result) {
        m_sheetOpen = false;
        const QStringList chosen = panel->selectedFiles();
        if (result != QDialog::Accepted || chosen.isEmpty())
            return; // nothing saved, nothing recorded
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
