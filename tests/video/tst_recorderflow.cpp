#include "MediaReader.h"
#include "RecordingCancellation.h"
#include "RecordingFiles.h"
#include "TestMedia.h"
#include "VideoFile.h"
#include "VideoRecorder.h"

#include <QDir>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// One display, output 1, 1280 × 720 at the origin.
class OneDisplay : public RecordingDesktopInterface {
public:
    std::optional<CaptureStream> stream(quint32 id) override
    {
        return id == 1 ? std::optional(CaptureStream()) : std::nullopt;
    }
    std::optional<QRect> displayGeometry(quint32 id) override
    {
        return id == 1 ? std::optional(QRect(0, 0, 1280, 720)) : std::nullopt;
    }
    std::optional<QRect> windowGeometry(quint32) override { return std::nullopt; }
    std::unique_ptr<ErrorWatch> watchCapture(quint32, bool, ErrorHandler) override { return nullptr; }
    void release(quint32 id) override { released.append(id); }

    QList<quint32> released;
};

// What the scripted captures answer, and what was asked of them; it outlives each capture.
struct Script {
    std::optional<Error> prepareError;
    std::optional<Error> startError;
    int starts = 0;
    int stops = 0;
    int shutDowns = 0;
};

// A capture driven by the test: it reports exactly what the test tells it to, when it says so, and
// writes into the real staging file.
class ScriptedSession : public CaptureSession {
public:
    ScriptedSession(CaptureRequest request, Script& script)
        : m_request(std::move(request))
        , m_script(script)
    {
    }
    void prepare(std::function<void(const std::optional<Error>&)> done) override
    {
        QTimer::singleShot(0, this, [this, done] { done(m_script.prepareError); });
    }
    std::optional<Error> start() override
    {
        m_clock.start();
        ++m_script.starts;
        return m_script.startError;
    }
    std::optional<Error> stop() override
    {
        ++m_script.stops;
        return std::nullopt;
    }
    void shutDown(std::function<void()> done) override
    {
        ++m_script.shutDowns;
        QTimer::singleShot(0, this, done);
    }
    // Like a real capture, the file's clock starts a moment before the first data reaches it.
    std::optional<double> recordedSeconds() const override
    {
        return m_clock.isValid() ? 0.5 + static_cast<double>(m_clock.elapsed()) / 1000.0 : 0.5;
    }

    void write(const QByteArray& bytes) const
    {
        QFile file(m_request.stagingPath);
        QVERIFY(file.open(QIODevice::Append));
        file.write(bytes);
    }
    void writeCopyOf(const QString& path) const
    {
        QFile source(path);
        QVERIFY(source.open(QIODevice::ReadOnly));
        write(source.readAll());
    }
    const CaptureRequest& request() const { return m_request; }

private:
    CaptureRequest m_request;
    Script& m_script;
    QElapsedTimer m_clock;
};

const VideoDisplay display { 1, u"DUMMY0"_s, QRect(0, 0, 1280, 720), 1.0 };

} // namespace

// The recorder's state machine with a scripted capture and the real finishing step.
class TestRecorderFlow : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_video; // a real two-track recording to hand over as the capture's output
    OneDisplay m_desktop;
    std::unique_ptr<VideoRecorder> m_recorder;
    QPointer<ScriptedSession> m_session;
    Script m_script;
    std::optional<QString> m_microphone = u"vexet_mic"_s;
    QList<QPair<RecorderState, QString>> m_statuses;
    std::vector<Result<QString>> m_results; // std::vector: GCC 12 misreads QList<variant> copies
    std::function<void(RecorderState, const QString&)> m_onStatus;

    QString destination() const { return m_dir.filePath(u"film.mp4"_s); }
    QStringList leftovers() const
    {
        return QDir(m_dir.path())
            .entryList({ u".Vexet-*"_s, u"Vexet-kurtarma-*"_s }, QDir::Files | QDir::Hidden);
    }
    QStringList texts() const
    {
        QStringList result;
        for (const auto& status : m_statuses)
            result.append(status.second);
        return result;
    }

    void startRecording(const VideoOptions& options = {})
    {
        m_recorder->start(display, options, destination());
    }
    bool waitForRecording()
    {
        if (!QTest::qWaitFor([&] { return m_session && m_script.starts == 1; }, 10000))
            return false;
        m_session->onStarted();
        return m_recorder->state() == RecorderState::Recording;
    }
    bool waitForResult()
    {
        return QTest::qWaitFor([&] { return !m_results.empty(); }, 20000);
    }
    QString message() const
    {
        if (m_results.empty() || m_results.front().ok())
            return {};
        return m_results.front().error().localizedDescription();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_video = QDir::temp().filePath(u"vexet-flow-%1.mp4"_s.arg(QCoreApplication::applicationPid()));
        QCOMPARE(TestMedia::write(m_video, 2, { { 440, 0.5, 0, 2 }, { 1000, 0.5, 0, 2 } }), QString());
    }
    void cleanupTestCase() { QFile::remove(m_video); }

    void init()
    {
        m_statuses.clear();
        m_results.clear();
        m_onStatus = nullptr;
        m_script = Script();
        m_microphone = u"vexet_mic"_s;
        for (const QString& name : QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden))
            QFile::remove(m_dir.filePath(name));
        VideoRecorder::Backend backend;
        backend.createSession = [this](const CaptureRequest& request, RecordingDesktopInterface&) {
            auto session = std::make_unique<ScriptedSession>(request, m_script);
            m_session = session.get();
            return std::unique_ptr<CaptureSession>(std::move(session));
        };
        backend.defaultMicrophone = [this] { return m_microphone; };
        backend.finishAudio = &VideoFile::finishAudio;
        m_recorder = std::make_unique<VideoRecorder>(m_desktop, backend);
        m_recorder->onStatus = [this](RecorderState state, const QString& text) {
            m_statuses.append({ state, text });
            if (m_onStatus)
                m_onStatus(state, text);
        };
        m_recorder->onFinish = [this](const Result<QString>& result) { m_results.push_back(result); };
    }
    void cleanup() { m_recorder.reset(); }

    void aRecordingRunsThroughEveryStateAndReplacesTheDestination()
    {
        QFile old(destination());
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("an older film");
        old.close();
        // A second start and a stop while stopping or saving change nothing.
        m_onStatus = [this](RecorderState state, const QString&) {
            if (state == RecorderState::Stopping || state == RecorderState::Saving)
                m_recorder->stop();
        };
        startRecording();
        QCOMPARE(m_recorder->state(), RecorderState::Starting);
        m_recorder->start(display, {}, m_dir.filePath(u"other.mp4"_s));
        QCOMPARE(m_statuses.size(), 1);
        QVERIFY(waitForRecording());
        QCOMPARE(m_session->request().frameSize, VideoOptions::Size({ 1280, 720 }));
        QVERIFY(RecordingFiles::isStagingName(QFileInfo(m_session->request().stagingPath).fileName()));
        m_recorder->start(display, {}, m_dir.filePath(u"other.mp4"_s));
        QVERIFY(QTest::qWaitFor([&] { return texts().contains(u"00:01"_s); }, 3000));

        m_recorder->stop();
        QCOMPARE(m_recorder->state(), RecorderState::Stopping);
        QVERIFY(QTest::qWaitFor([&] { return m_script.stops == 1; }, 2000));
        m_session->writeCopyOf(m_video);
        m_session->onFinished();
        QCOMPARE(m_recorder->state(), RecorderState::Saving);
        QVERIFY(waitForResult());

        QCOMPARE(m_results.size(), 1);
        QVERIFY(m_results.front().ok());
        QCOMPARE(m_results.front().value(), destination());
        QCOMPARE(texts(),
            QStringList({ u"Hazırlanıyor…"_s, u"3…"_s, u"2…"_s, u"1…"_s, u"00:00"_s, u"00:01"_s,
                u"Kayıt tamamlanıyor…"_s, u"Video kaydediliyor…"_s, QString() }));
        QCOMPARE(m_statuses.last().first, RecorderState::Idle);
        QCOMPARE(m_script.stops, 1);
        const MediaReader::Packets result = MediaReader::packets(destination());
        QCOMPARE(result.video().size(), 1);
        QCOMPARE(result.audio().size(), 1);
        QVERIFY(leftovers().isEmpty());
        QVERIFY(!QFile::exists(m_dir.filePath(u"other.mp4"_s)));
    }

    void twoCaptureErrorsEndInOneCompletion()
    {
        startRecording();
        QVERIFY(waitForRecording());
        m_session->write("recorded bytes");
        m_session->onFailed(Error(u"X"_s, 5, u"Akış durdu."_s));
        m_session->onFailed(Error(u"X"_s, 6, u"İkinci hata."_s));
        QCOMPARE(m_recorder->state(), RecorderState::Stopping);
        QVERIFY(waitForResult());
        QTest::qWait(200);
        QCOMPARE(m_results.size(), 1);
        QCOMPARE(texts().count(u"Kayıt sonlandırılıyor…"_s), 1);
        QVERIFY(
            message().startsWith(u"Akış durdu.\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s));
        const QString recovery = message().section(u'\n', 2);
        QVERIFY(RecordingFiles::isRecoveryName(QFileInfo(recovery).fileName()));
        QFile rescued(recovery);
        QVERIFY(rescued.open(QIODevice::ReadOnly));
        QCOMPARE(rescued.readAll(), QByteArray("recorded bytes"));
        QCOMPARE(leftovers(), QStringList({ QFileInfo(recovery).fileName() }));
    }

    void aStreamErrorAfterTheOutputFinishedStillSavesTheVideo()
    {
        startRecording();
        QVERIFY(waitForRecording());
        m_recorder->stop();
        QVERIFY(QTest::qWaitFor([&] { return m_script.stops == 1; }, 2000));
        m_session->writeCopyOf(m_video);
        m_session->onFinished();
        m_session->onFailed(Error(u"X"_s, 5, u"Akış durdu."_s));
        QCOMPARE(m_recorder->state(), RecorderState::Saving);
        QVERIFY(waitForResult());
        QCOMPARE(m_results.size(), 1);
        QCOMPARE(message(),
            u"Kayıt kesildi: Akış durdu.\nTamamlanabilen video burada saklandı:\n"_s + destination());
        QCOMPARE(m_results.front().error().domain(), u"Vexet.Video"_s);
        QCOMPARE(MediaReader::packets(destination()).video().size(), 1);
        QVERIFY(leftovers().isEmpty());
    }

    void anErrorBeforeAnyDataIsReportedBare()
    {
        startRecording();
        QVERIFY(waitForRecording());
        const Error error(u"X"_s, 5, u"Akış başlamadan durdu."_s);
        m_session->onFailed(error);
        QVERIFY(waitForResult());
        QCOMPARE(m_results.front().error(), error);
        QVERIFY(leftovers().isEmpty());
    }

    void aFailedFinishKeepsTheRecordingAsRecoveryFile()
    {
        startRecording();
        QVERIFY(waitForRecording());
        m_recorder->stop();
        QVERIFY(QTest::qWaitFor([&] { return m_script.stops == 1; }, 2000));
        m_session->write(QByteArray(4096, 'x'));
        m_session->onFinished();
        QVERIFY(waitForResult());
        QVERIFY(!m_results.front().ok());
        QVERIFY2(message().contains(u"\nKurtarma dosyası (oynatılabilirliği garanti edilmez):\n"_s),
            qPrintable(message()));
        QVERIFY(!QFile::exists(destination()));
        const QStringList left = leftovers();
        QCOMPARE(left.size(), 1);
        QVERIFY(RecordingFiles::isRecoveryName(left.first()));
        QVERIFY(message().endsWith(m_dir.filePath(left.first())));
    }

    void stopDuringTheCountdownCancels()
    {
        m_onStatus = [this](RecorderState, const QString& text) {
            if (text == u"2…"_s)
                m_recorder->stop();
        };
        startRecording();
        QCOMPARE(m_recorder->state(), RecorderState::Starting);
        QVERIFY(waitForResult());
        QVERIFY(RecordingCancellation::matches(m_results.front().error()));
        QCOMPARE(texts(), QStringList({ u"Hazırlanıyor…"_s, u"3…"_s, u"2…"_s, QString() }));
        QCOMPARE(m_script.starts, 0);
        QCOMPARE(m_script.shutDowns, 1);
        QVERIFY(leftovers().isEmpty());
        QVERIFY(!QFile::exists(destination()));
    }

    void errorsOfTheStartLeaveNothing()
    {
        m_microphone.reset();
        VideoOptions withMicrophone;
        withMicrophone.microphone = true;
        startRecording(withMicrophone);
        QVERIFY(waitForResult());
        QCOMPARE(m_results.front().error(), videoError(u"Kullanılabilir mikrofon bulunamadı."_s));
        QCOMPARE(texts(), QStringList({ u"Hazırlanıyor…"_s, QString() }));

        m_results.clear();
        m_script.prepareError = Error(u"X"_s, 2, u"Ses sunucusuna bağlanılamadı."_s);
        startRecording();
        QVERIFY(waitForResult());
        QCOMPARE(m_results.front().error(), *m_script.prepareError);
        QVERIFY(leftovers().isEmpty());

        m_results.clear();
        m_recorder->start(VideoRegion { display, QRectF(1270, 0, 100, 100) }, {}, destination());
        QVERIFY(waitForResult());
        QCOMPARE(m_results.front().error(), videoError(u"Seçilen alan geçersiz; alanı tekrar seç."_s));
        QVERIFY(leftovers().isEmpty());
    }

    void aFailureWhenCaptureStartsLeavesNothing()
    {
        m_script.startError = Error(u"X"_s, 3, u"Yakalama başlamadı."_s);
        startRecording();
        QVERIFY(waitForResult());
        QCOMPARE(m_results.front().error(), *m_script.startError);
        QCOMPARE(m_script.starts, 1);
        QCOMPARE(m_script.shutDowns, 1);
        QVERIFY(leftovers().isEmpty());
    }

    void aRecorderDestroyedWhileRecordingKeepsWhatWasRecorded()
    {
        startRecording();
        QVERIFY(waitForRecording());
        m_session->write("recorded bytes");
        m_recorder.reset();
        QCOMPARE(m_results.size(), 0);
        const QStringList left = leftovers();
        QCOMPARE(left.size(), 1);
        QVERIFY(RecordingFiles::isRecoveryName(left.first()));
    }
};

QTEST_GUILESS_MAIN(TestRecorderFlow)
#include "tst_recorderflow.moc"
