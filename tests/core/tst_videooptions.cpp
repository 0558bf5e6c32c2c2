#include "Preferences.h"
#include "VideoOptions.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(VideoOptions::Size)

class TestVideoOptions : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void freshInstallation();
    void saveWritesFiveKeys();
    void savedRoundTrip_data();
    void savedRoundTrip();
    void fpsOnlySixtySurvives_data();
    void fpsOnlySixtySurvives();
    void qualityIsClamped_data();
    void qualityIsClamped();
    void systemAndCursorNeedABoolean_data();
    void systemAndCursorNeedABoolean();
    void microphoneReadsAsBoolean_data();
    void microphoneReadsAsBoolean();
    void savedWithoutStoreUsesSharedPreferences();

    void outputSize_data();
    void outputSize();
    void outputSizeIsEvenAndBounded();

private:
    QString file(const QString& contents);

    QTemporaryDir m_dir;
    QString m_path;
    int m_counter = 0;
};

void TestVideoOptions::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QVERIFY(qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_dir.filePath(u"config"_s))));
}

void TestVideoOptions::init()
{
    m_path = m_dir.filePath(u"video-%1.conf"_s.arg(++m_counter));
}

// Writes an INI file as another session would have left it.
QString TestVideoOptions::file(const QString& contents)
{
    QFile out(m_path);
    if (!out.open(QIODevice::WriteOnly))
        return QString();
    out.write(u"[General]\n"_s.toUtf8() + contents.toUtf8() + "\n");
    return m_path;
}

void TestVideoOptions::freshInstallation()
{
    const QSettings store(m_path, QSettings::IniFormat);
    const VideoOptions options = VideoOptions::saved(store);
    QVERIFY(options.systemAudio);
    QVERIFY(!options.microphone);
    QCOMPARE(options.fps, 30);
    QCOMPARE(options.quality, 0);
    QVERIFY(options.cursor);
    QVERIFY(options == VideoOptions {});
}

void TestVideoOptions::saveWritesFiveKeys()
{
    QSettings store(m_path, QSettings::IniFormat);
    const VideoOptions options { false, true, 60, 2, false };
    options.save(store);
    QStringList keys = store.allKeys();
    keys.sort();
    QCOMPARE(keys,
        (QStringList { u"video.cursor"_s, u"video.fps"_s, u"video.microphone"_s, u"video.quality"_s,
            u"video.system"_s }));
    QCOMPARE(store.value(u"video.system"_s).typeId(), int(QMetaType::Bool));
    QCOMPARE(store.value(u"video.microphone"_s).typeId(), int(QMetaType::Bool));
    QCOMPARE(store.value(u"video.cursor"_s).typeId(), int(QMetaType::Bool));
    QCOMPARE(store.value(u"video.fps"_s).typeId(), int(QMetaType::Int));
    QCOMPARE(store.value(u"video.quality"_s).typeId(), int(QMetaType::Int));
    QCOMPARE(store.value(u"video.fps"_s).toInt(), 60);
    QCOMPARE(store.value(u"video.quality"_s).toInt(), 2);
    store.sync();
    QCOMPARE(store.status(), QSettings::NoError);
}

void TestVideoOptions::savedRoundTrip_data()
{
    QTest::addColumn<bool>("systemAudio");
    QTest::addColumn<bool>("microphone");
    QTest::addColumn<int>("fps");
    QTest::addColumn<int>("quality");
    QTest::addColumn<bool>("cursor");
    QTest::newRow("defaults") << true << false << 30 << 0 << true;
    QTest::newRow("inverted") << false << true << 60 << 2 << false;
    QTest::newRow("4K") << true << true << 30 << 1 << false;
}

void TestVideoOptions::savedRoundTrip()
{
    QFETCH(bool, systemAudio);
    QFETCH(bool, microphone);
    QFETCH(int, fps);
    QFETCH(int, quality);
    QFETCH(bool, cursor);
    const VideoOptions options { systemAudio, microphone, fps, quality, cursor };
    {
        QSettings store(m_path, QSettings::IniFormat);
        options.save(store);
        QVERIFY(VideoOptions::saved(store) == options);
        store.sync();
    }
    // Through the file, where everything comes back as text.
    QFile written(m_path);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QByteArray contents = written.readAll();
    const QString copy = m_path + u".copy"_s;
    QFile out(copy);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(contents);
    out.close();
    const QSettings reread(copy, QSettings::IniFormat);
    QCOMPARE(reread.value(u"video.system"_s).typeId(), int(QMetaType::QString));
    const VideoOptions back = VideoOptions::saved(reread);
    QCOMPARE(back.systemAudio, systemAudio);
    QCOMPARE(back.microphone, microphone);
    QCOMPARE(back.fps, fps);
    QCOMPARE(back.quality, quality);
    QCOMPARE(back.cursor, cursor);
}

void TestVideoOptions::fpsOnlySixtySurvives_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("fps");
    QTest::newRow("60") << u"video.fps=60"_s << 60;
    QTest::newRow("30") << u"video.fps=30"_s << 30;
    QTest::newRow("25") << u"video.fps=25"_s << 30;
    QTest::newRow("0") << u"video.fps=0"_s << 30;
    QTest::newRow("120") << u"video.fps=120"_s << 30;
    QTest::newRow("-60") << u"video.fps=-60"_s << 30;
    QTest::newRow("text") << u"video.fps=sixty"_s << 30;
    QTest::newRow("absent") << u"other=60"_s << 30;
}

void TestVideoOptions::fpsOnlySixtySurvives()
{
    QFETCH(QString, line);
    QFETCH(int, fps);
    const QSettings store(file(line), QSettings::IniFormat);
    QCOMPARE(VideoOptions::saved(store).fps, fps);

    // The same numbers stored as integers in this session.
    QSettings memory(m_path + u".mem"_s, QSettings::IniFormat);
    const QString value = line.section(u'=', 1);
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (isNumber && line.startsWith(u"video.fps"_s)) {
        memory.setValue(u"video.fps"_s, number);
        QCOMPARE(VideoOptions::saved(memory).fps, fps);
    }
}

void TestVideoOptions::qualityIsClamped_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<int>("quality");
    QTest::newRow("-3") << QVariant(-3) << 0;
    QTest::newRow("0") << QVariant(0) << 0;
    QTest::newRow("1") << QVariant(1) << 1;
    QTest::newRow("2") << QVariant(2) << 2;
    QTest::newRow("7") << QVariant(7) << 2;
    QTest::newRow("huge") << QVariant(qint64(1) << 40) << 2;
    QTest::newRow("text -3") << QVariant(u"-3"_s) << 0;
    QTest::newRow("text 7") << QVariant(u"7"_s) << 2;
    QTest::newRow("text 1") << QVariant(u"1"_s) << 1;
    QTest::newRow("text oversized") << QVariant(u"99999999999999999999999"_s) << 2;
    QTest::newRow("text garbage") << QVariant(u"best"_s) << 0;
    QTest::newRow("fraction") << QVariant(1.9) << 1;
}

void TestVideoOptions::qualityIsClamped()
{
    QFETCH(QVariant, stored);
    QFETCH(int, quality);
    QSettings store(m_path, QSettings::IniFormat);
    store.setValue(u"video.quality"_s, stored);
    QCOMPARE(VideoOptions::saved(store).quality, quality);
}

void TestVideoOptions::systemAndCursorNeedABoolean_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("expected");
    QTest::newRow("false") << u"false"_s << false;
    QTest::newRow("true") << u"true"_s << true;
    QTest::newRow("string") << u"kapalı"_s << true;
    QTest::newRow("0") << u"0"_s << true;
    QTest::newRow("empty") << QString() << true;
}

void TestVideoOptions::systemAndCursorNeedABoolean()
{
    QFETCH(QString, value);
    QFETCH(bool, expected);
    const QSettings store(file(u"video.system=%1\nvideo.cursor=%1"_s.arg(value)), QSettings::IniFormat);
    const VideoOptions options = VideoOptions::saved(store);
    QCOMPARE(options.systemAudio, expected);
    QCOMPARE(options.cursor, expected);

    QSettings memory(m_path + u".mem"_s, QSettings::IniFormat);
    memory.setValue(u"video.system"_s, 0);
    memory.setValue(u"video.cursor"_s, false);
    QVERIFY(VideoOptions::saved(memory).systemAudio);
    QVERIFY(!VideoOptions::saved(memory).cursor);
}

void TestVideoOptions::microphoneReadsAsBoolean_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("expected");
    QTest::newRow("true") << u"true"_s << true;
    QTest::newRow("false") << u"false"_s << false;
    QTest::newRow("string") << u"açık"_s << false;
    QTest::newRow("1") << u"1"_s << false;
}

void TestVideoOptions::microphoneReadsAsBoolean()
{
    QFETCH(QString, value);
    QFETCH(bool, expected);
    const QSettings store(file(u"video.microphone="_s + value), QSettings::IniFormat);
    QCOMPARE(VideoOptions::saved(store).microphone, expected);
}

void TestVideoOptions::savedWithoutStoreUsesSharedPreferences()
{
    QSettings& shared = Preferences::shared().defaults();
    QVERIFY(VideoOptions::saved() == VideoOptions {});
    const VideoOptions options { false, true, 60, 1, false };
    options.save();
    QCOMPARE(shared.value(u"video.fps"_s).toInt(), 60);
    QVERIFY(VideoOptions::saved() == options);
    QVERIFY(VideoOptions::saved(shared) == options);
    // Written now, into the test's folder, rather than by the shared store when the process ends,
    // which would make that folder again after it has been removed.
    shared.sync();
    QCOMPARE(shared.status(), QSettings::NoError);
}

void TestVideoOptions::outputSize_data()
{
    QTest::addColumn<int>("quality");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<VideoOptions::Size>("size");
    QTest::newRow("1440p at 1080p") << 0 << 2560.0 << 1440.0 << VideoOptions::Size { 1920, 1080 };
    QTest::newRow("small window stays") << 0 << 1512.0 << 982.0 << VideoOptions::Size { 1512, 982 };
    QTest::newRow("retina laptop") << 0 << 3024.0 << 1964.0 << VideoOptions::Size { 1662, 1080 };
    QTest::newRow("portrait stays") << 0 << 1080.0 << 1920.0 << VideoOptions::Size { 1080, 1920 };
    QTest::newRow("5K at H.264 limit") << 2 << 5120.0 << 2880.0 << VideoOptions::Size { 4096, 2304 };
    QTest::newRow("odd to even") << 0 << 1001.0 << 601.0 << VideoOptions::Size { 1000, 600 };
    QTest::newRow("1 x 1") << 0 << 1.0 << 1.0 << VideoOptions::Size { 2, 2 };
    QTest::newRow("0 x 0") << 0 << 0.0 << 0.0 << VideoOptions::Size { 2, 2 };
    QTest::newRow("exact 1080p") << 0 << 1920.0 << 1080.0 << VideoOptions::Size { 1920, 1080 };
    QTest::newRow("5K at 4K") << 1 << 5120.0 << 2880.0 << VideoOptions::Size { 3840, 2160 };
    QTest::newRow("5K at 1080p") << 0 << 5120.0 << 2880.0 << VideoOptions::Size { 1920, 1080 };
    QTest::newRow("portrait 4K at 1080p") << 0 << 2160.0 << 3840.0 << VideoOptions::Size { 1080, 1920 };
    QTest::newRow("square at 1080p") << 0 << 3000.0 << 3000.0 << VideoOptions::Size { 1080, 1080 };
    QTest::newRow("ultrawide at 1080p") << 0 << 5120.0 << 1440.0 << VideoOptions::Size { 1920, 540 };
    QTest::newRow("fractional source") << 0 << 1001.7 << 600.9 << VideoOptions::Size { 1000, 600 };
    QTest::newRow("thin strip") << 0 << 3000.0 << 0.5 << VideoOptions::Size { 1920, 2 };
    QTest::newRow("other quality as limit") << 5 << 8192.0 << 4608.0 << VideoOptions::Size { 4096, 2304 };
}

void TestVideoOptions::outputSize()
{
    QFETCH(int, quality);
    QFETCH(double, width);
    QFETCH(double, height);
    QFETCH(VideoOptions::Size, size);
    VideoOptions options;
    options.quality = quality;
    const VideoOptions::Size result = options.outputSize(width, height);
    QCOMPARE(result.width, size.width);
    QCOMPARE(result.height, size.height);
}

void TestVideoOptions::outputSizeIsEvenAndBounded()
{
    const int longSides[3] = { 1920, 3840, 4096 };
    const int shortSides[3] = { 1080, 2160, 2304 };
    for (int quality = 0; quality < 3; ++quality) {
        VideoOptions options;
        options.quality = quality;
        for (int width = 1; width <= 9000; width += 397) {
            for (int height = 1; height <= 9000; height += 409) {
                const VideoOptions::Size size = options.outputSize(width, height);
                QVERIFY(size.width >= 2 && size.height >= 2);
                QCOMPARE(size.width % 2, 0);
                QCOMPARE(size.height % 2, 0);
                QVERIFY(size.width <= std::max(width, 2) && size.height <= std::max(height, 2));
                const bool portrait = width < height;
                QVERIFY(size.width <= (portrait ? shortSides[quality] : longSides[quality]));
                QVERIFY(size.height <= (portrait ? longSides[quality] : shortSides[quality]));
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestVideoOptions)
#include "tst_videooptions.moc"
