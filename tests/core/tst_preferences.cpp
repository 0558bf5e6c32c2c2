#include "Preferences.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

class TestPreferences : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void freshUserGetsDefaults();
    void keysAreShortcutDotRawValue();
    void setStoresJsonData();
    void storedShortcutSurvivesTheFile();
    void unreadableShortcutGivesDefault_data();
    void unreadableShortcutGivesDefault();
    void copyAutomaticallyInMemory_data();
    void copyAutomaticallyInMemory();
    void copyAutomaticallyFromFile_data();
    void copyAutomaticallyFromFile();
    void hasWelcomed();
    void noCache();
    void unwritableStoreDoesNotStopTheProgram_data();
    void unwritableStoreDoesNotStopTheProgram();
    void sharedInstance();

private:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    Preferences open(const QString& name) const
    {
        return Preferences(std::make_unique<QSettings>(path(name), QSettings::IniFormat));
    }
    void writeFile(const QString& name, const QByteArray& contents) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(contents), contents.size());
    }

    QTemporaryDir m_dir;
    int m_counter = 0;
    QString m_name;
};

void TestPreferences::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // Before the first QSettings: the user scope lives under XDG_CONFIG_HOME.
    QVERIFY(qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_dir.filePath(u"config"_s))));
}

void TestPreferences::init()
{
    // A file of its own for every test function and data row: settings objects of one process share
    // their view of a file.
    m_name = u"prefs-%1.conf"_s.arg(++m_counter);
}

void TestPreferences::freshUserGetsDefaults()
{
    Preferences preferences = open(m_name);
    const QStringList displays { u"⌥⇧⌘3"_s, u"⌥⇧⌘4"_s, u"⌥⇧⌘5"_s, u"⌥⇧⌘G"_s };
    for (CaptureMode mode : CaptureModes::allCases) {
        const Shortcut shortcut = preferences.shortcut(mode);
        const Shortcut expected = Shortcut::defaultShortcut(mode);
        QCOMPARE(shortcut.keyCode, expected.keyCode);
        QCOMPARE(shortcut.modifiers, 2816u);
        QCOMPARE(shortcut.keyLabel, expected.keyLabel);
        QCOMPARE(shortcut.display(), displays.at(int(CaptureModes::rawValue(mode)) - 1));
    }
    QVERIFY(preferences.copyAutomatically());
    QVERIFY(!preferences.hasWelcomed());
    QVERIFY(preferences.defaults().allKeys().isEmpty());
}

void TestPreferences::keysAreShortcutDotRawValue()
{
    QCOMPARE(Preferences::shortcutKey(CaptureMode::region), u"shortcut.1"_s);
    QCOMPARE(Preferences::shortcutKey(CaptureMode::window), u"shortcut.2"_s);
    QCOMPARE(Preferences::shortcutKey(CaptureMode::screen), u"shortcut.3"_s);
    QCOMPARE(Preferences::shortcutKey(CaptureMode::video), u"shortcut.4"_s);
}

void TestPreferences::setStoresJsonData()
{
    Preferences preferences = open(m_name);
    const Shortcut space { 49, 6144, u"Boşluk"_s };
    preferences.set(space, CaptureMode::window);

    const QVariant stored = preferences.defaults().value(u"shortcut.2"_s);
    QCOMPARE(stored.typeId(), int(QMetaType::QByteArray));
    QCOMPARE(stored.toByteArray(), space.toJson());
    QCOMPARE(preferences.defaults().allKeys(), QStringList { u"shortcut.2"_s });

    const Shortcut back = preferences.shortcut(CaptureMode::window);
    QCOMPARE(back.keyCode, 49u);
    QCOMPARE(back.modifiers, 6144u);
    QCOMPARE(back.keyLabel, u"Boşluk"_s);
    // The others keep their defaults.
    QCOMPARE(preferences.shortcut(CaptureMode::region).keyCode, 20u);
    QCOMPARE(preferences.shortcut(CaptureMode::video).keyLabel, u"G"_s);
}

void TestPreferences::storedShortcutSurvivesTheFile()
{
    {
        Preferences preferences = open(m_name);
        preferences.set(Shortcut { 122, 4096 | 512, u"F1"_s }, CaptureMode::video);
        preferences.setCopyAutomatically(false);
        preferences.defaults().sync();
        QCOMPARE(preferences.defaults().status(), QSettings::NoError);
    }
    QFile file(path(m_name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray contents = file.readAll();
    QVERIFY(contents.contains("shortcut.4=\"@ByteArray("));
    QVERIFY(contents.contains("copyAutomatically=false"));

    // A file written elsewhere (another session) reads the same; booleans come back as text.
    writeFile(m_name + u".copy"_s, contents);
    Preferences copy = open(m_name + u".copy"_s);
    QCOMPARE(copy.defaults().value(u"copyAutomatically"_s).typeId(), int(QMetaType::QString));
    QVERIFY(!copy.copyAutomatically());
    const Shortcut back = copy.shortcut(CaptureMode::video);
    QCOMPARE(back.keyCode, 122u);
    QCOMPARE(back.modifiers, 4608u);
    QCOMPARE(back.keyLabel, u"F1"_s);
}

void TestPreferences::unreadableShortcutGivesDefault_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("not json") << QVariant(QByteArray("garbage"));
    QTest::newRow("empty data") << QVariant(QByteArray());
    QTest::newRow("no keyLabel") << QVariant(QByteArray(R"({"keyCode":49,"modifiers":6144})"));
    QTest::newRow("keyCode as text") << QVariant(
        QByteArray(R"({"keyCode":"49","modifiers":6144,"keyLabel":"x"})"));
    QTest::newRow("array") << QVariant(QByteArray(R"([49,6144,"x"])"));
    QTest::newRow("json as text, not data")
        << QVariant(QString::fromUtf8(Shortcut { 49, 6144, u"Boşluk"_s }.toJson()));
    QTest::newRow("number") << QVariant(5);
    QTest::newRow("boolean") << QVariant(true);
}

void TestPreferences::unreadableShortcutGivesDefault()
{
    QFETCH(QVariant, stored);
    Preferences preferences = open(m_name);
    preferences.defaults().setValue(u"shortcut.2"_s, stored);

    const Shortcut fallback = preferences.shortcut(CaptureMode::window);
    QCOMPARE(fallback.keyCode, 21u);
    QCOMPARE(fallback.modifiers, 2816u);
    QCOMPARE(fallback.keyLabel, u"4"_s);

    // The next set replaces the unreadable value.
    preferences.set(Shortcut { 37, 256, u"L"_s }, CaptureMode::window);
    QCOMPARE(preferences.shortcut(CaptureMode::window).keyCode, 37u);
    QCOMPARE(preferences.shortcut(CaptureMode::window).keyLabel, u"L"_s);
}

void TestPreferences::copyAutomaticallyInMemory_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("expected");
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("true") << QVariant(true) << true;
    QTest::newRow("text false") << QVariant(u"false"_s) << false;
    QTest::newRow("text true") << QVariant(u"true"_s) << true;
    QTest::newRow("zero") << QVariant(0) << true;
    QTest::newRow("text maybe") << QVariant(u"maybe"_s) << true;
    QTest::newRow("text FALSE") << QVariant(u"FALSE"_s) << true;
    QTest::newRow("data") << QVariant(QByteArray("false")) << true;
}

void TestPreferences::copyAutomaticallyInMemory()
{
    QFETCH(QVariant, stored);
    QFETCH(bool, expected);
    Preferences preferences = open(m_name);
    preferences.defaults().setValue(u"copyAutomatically"_s, stored);
    QCOMPARE(preferences.copyAutomatically(), expected);
}

void TestPreferences::copyAutomaticallyFromFile_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("expected");
    QTest::newRow("false") << QByteArray("copyAutomatically=false") << false;
    QTest::newRow("true") << QByteArray("copyAutomatically=true") << true;
    QTest::newRow("0") << QByteArray("copyAutomatically=0") << true;
    QTest::newRow("1") << QByteArray("copyAutomatically=1") << true;
    QTest::newRow("maybe") << QByteArray("copyAutomatically=maybe") << true;
    QTest::newRow("empty") << QByteArray("copyAutomatically=") << true;
    QTest::newRow("absent") << QByteArray("other=false") << true;
}

void TestPreferences::copyAutomaticallyFromFile()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, expected);
    writeFile(m_name, "[General]\n" + line + "\n");
    Preferences preferences = open(m_name);
    QCOMPARE(preferences.copyAutomatically(), expected);
}

void TestPreferences::hasWelcomed()
{
    Preferences preferences = open(m_name);
    QVERIFY(!preferences.hasWelcomed());
    preferences.setHasWelcomed(true);
    QVERIFY(preferences.hasWelcomed());
    QCOMPARE(preferences.defaults().value(u"hasWelcomed"_s).typeId(), int(QMetaType::Bool));
    preferences.defaults().setValue(u"hasWelcomed"_s, u"true"_s);
    QVERIFY(preferences.hasWelcomed());
    preferences.defaults().setValue(u"hasWelcomed"_s, u"yes"_s);
    QVERIFY(!preferences.hasWelcomed());
    preferences.setHasWelcomed(false);
    QVERIFY(!preferences.hasWelcomed());
}

void TestPreferences::noCache()
{
    Preferences first = open(m_name);
    Preferences second = open(m_name);
    QCOMPARE(second.shortcut(CaptureMode::screen).keyCode, 23u);

    first.set(Shortcut { 1, 4096, u"S"_s }, CaptureMode::screen);
    QCOMPARE(second.shortcut(CaptureMode::screen).keyCode, 1u);
    QCOMPARE(second.shortcut(CaptureMode::screen).keyLabel, u"S"_s);

    second.setCopyAutomatically(false);
    QVERIFY(!first.copyAutomatically());
    first.defaults().setValue(u"copyAutomatically"_s, true);
    QVERIFY(second.copyAutomatically());

    second.defaults().remove(u"shortcut.3"_s);
    QCOMPARE(first.shortcut(CaptureMode::screen).keyCode, 23u);
}

void TestPreferences::unwritableStoreDoesNotStopTheProgram_data()
{
    QTest::addColumn<QString>("file");
    // Root may write into read-only directories, so the file is made unwritable by its shape.
    QTest::newRow("a directory") << u"unwritable-dir"_s;
    QTest::newRow("below a plain file") << u"plain-file/Vexet.conf"_s;
}

void TestPreferences::unwritableStoreDoesNotStopTheProgram()
{
    QFETCH(QString, file);
    QVERIFY(QDir(m_dir.path()).mkpath(u"unwritable-dir"_s));
    writeFile(u"plain-file"_s, "not a folder");

    Preferences preferences = open(file);
    QCOMPARE(preferences.shortcut(CaptureMode::region).keyCode, 20u);
    QVERIFY(preferences.copyAutomatically());

    preferences.set(Shortcut { 14, 768, u"E"_s }, CaptureMode::region);
    preferences.setCopyAutomatically(false);
    preferences.defaults().sync();
    QCOMPARE(preferences.defaults().status(), QSettings::AccessError);

    // The session goes on with what was set; nothing reached the disk.
    QCOMPARE(preferences.shortcut(CaptureMode::region).keyCode, 14u);
    QVERIFY(!preferences.copyAutomatically());
    QCOMPARE(preferences.shortcut(CaptureMode::video).keyCode, 5u);
    QVERIFY(QFileInfo(path(u"unwritable-dir"_s)).isDir());
    QVERIFY(!QFileInfo::exists(path(u"plain-file/Vexet.conf"_s)));
}

void TestPreferences::sharedInstance()
{
    Preferences& shared = Preferences::shared();
    QCOMPARE(&Preferences::shared(), &shared);
    QCOMPARE(shared.defaults().format(), QSettings::NativeFormat);
    QCOMPARE(shared.defaults().scope(), QSettings::UserScope);
    QCOMPARE(shared.defaults().organizationName(), u"Vexet"_s);
    QCOMPARE(shared.defaults().applicationName(), u"Vexet"_s);
    QCOMPARE(shared.defaults().fileName(), m_dir.filePath(u"config/Vexet/Vexet.conf"_s));

    QVERIFY(shared.copyAutomatically());
    shared.set(Shortcut { 45, 2048, u"N"_s }, CaptureMode::video);
    shared.defaults().sync();
    QCOMPARE(shared.defaults().status(), QSettings::NoError);
    QVERIFY(QFileInfo::exists(m_dir.filePath(u"config/Vexet/Vexet.conf"_s)));
    QCOMPARE(Preferences::shared().shortcut(CaptureMode::video).keyLabel, u"N"_s);
}

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
