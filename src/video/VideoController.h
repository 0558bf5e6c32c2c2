#pragma once

#include "OwnWindows.h"
#include "RecorderState.h"
#include "RegionSelector.h"
#include "Result.h"
#include "VideoOptions.h"
#include "VideoSideInterface.h"
#include "VideoTarget.h"
#include <optional>

#include <QFileDialog>
#include <QList>
#include <QPointer>
#include <QWidget>
#include <memory>

class FileReveal;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class RecordingDesktopInterface;
class SleepNotifier;
class VideoRecorder;
class VideoRegionPicker;
class VideoSources;

// The recording window: what to record, how, and where to; it runs the recorder with the
// program's own windows out of the way and shows how it went.
class VideoController : public QWidget, public VideoSideInterface {
    Q_OBJECT
public:
    static constexpr int width = 610;
    static constexpr int height = 570;

    VideoController(std::unique_ptr<VideoRecorder> recorder, VideoSources& sources, FileReveal& reveal,
        QSettings& store, QWidget* parent = nullptr);
    ~VideoController() override;

    void toggle() override;
    bool recorderIdle() const override;
    bool selecting() const override { return m_selecting; }
    bool sheetOpen() const override { return m_sheetOpen; }
    bool loading() const override { return m_loading; }
    void setPendingQuit(bool pending) override { m_pendingQuit = pending; }
    void stopRecorder() override;

    void present();
    void refresh();
    void sourceKindChanged();
    void startPressed();
    void finished(const Result<QString>& result);
    // Abandons a region selection under way, as if Escape had been pressed.
    void cancelSelection();

    QComboBox* kind() const { return m_kind; }
    QComboBox* source() const { return m_source; }
    QComboBox* quality() const { return m_quality; }
    QComboBox* fps() const { return m_fps; }
    QCheckBox* systemAudio() const { return m_systemAudio; }
    QCheckBox* microphone() const { return m_microphone; }
    QCheckBox* cursor() const { return m_cursor; }
    QLabel* info() const { return m_info; }
    QPushButton* startButton() const { return m_startButton; }
    QPushButton* refreshButton() const { return m_refreshButton; }
    QFileDialog* savePanel() const { return m_savePanel; }
    VideoRecorder& recorder() const { return *m_recorder; }
    RegionSelector* overlay() const;
    const QList<VideoDisplay>& displays() const { return m_displays; }
    const QList<VideoWindow>& windows() const { return m_windows; }
    VideoOptions chosenOptions() const;

private:
    void buildWindow(const VideoOptions& saved);
    void sourcesReady();
    void askDesktop();
    void selectRegion(const VideoDisplay& display);
    void regionChosen(const VideoDisplay& display, std::optional<QRectF> region, bool failed);
    void chooseDestination(const VideoTarget& target);
    void startRecording(const VideoTarget& target, const QString& destination);
    void recorderStatus(RecorderState state, const QString& text);

    std::unique_ptr<VideoRecorder> m_recorder;
    VideoSources& m_sources;
    FileReveal& m_reveal;
    QSettings& m_store;
    QComboBox* m_kind = nullptr;
    QComboBox* m_source = nullptr;
    QComboBox* m_quality = nullptr;
    QComboBox* m_fps = nullptr;
    QCheckBox* m_systemAudio = nullptr;
    QCheckBox* m_microphone = nullptr;
    QCheckBox* m_cursor = nullptr;
    QLabel* m_info = nullptr;
    QPushButton* m_startButton = nullptr;
    QPushButton* m_refreshButton = nullptr;
    QList<VideoDisplay> m_displays;
    QList<VideoWindow> m_windows;
    VideoRegionPicker* m_regionPicker = nullptr;
    QPointer<QFileDialog> m_savePanel;
    bool m_selecting = false;
    bool m_loading = false;
    bool m_sheetOpen = false;
    bool m_pendingQuit = false;
    OwnWindows m_suspendedWindows;
    SleepNotifier* m_sleep = nullptr;
    RecorderState m_recordingState = RecorderState::Idle;
};
