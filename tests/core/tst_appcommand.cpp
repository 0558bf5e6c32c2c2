#include "AppCommand.h"

#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(AppCommand)

class TestAppCommand : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void messages_data()
    {
        QTest::addColumn<AppCommand>("command");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("reopen") << AppCommand() << QByteArray("reopen");
        QTest::newRow("region") << AppCommand::capture(CaptureMode::region) << QByteArray("capture region");
        QTest::newRow("window") << AppCommand::capture(CaptureMode::window) << QByteArray("capture window");
        QTest::newRow("screen") << AppCommand::capture(CaptureMode::screen) << QByteArray("capture screen");
        QTest::newRow("video") << AppCommand::capture(CaptureMode::video) << QByteArray("capture video");
        QTest::newRow("settings") << AppCommand::settings() << QByteArray("settings");
    }

    void messages()
    {
        QFETCH(AppCommand, command);
        QFETCH(QByteArray, message);
        QCOMPARE(command.message(), message);
        const Result<AppCommand> back = AppCommand::fromMessage(message);
        QVERIFY(back.ok());
        QVERIFY(back.value() == command);
    }

    void kindsAndModes()
    {
        QCOMPARE(AppCommand().kind(), AppCommand::Kind::reopen);
        QCOMPARE(AppCommand::settings().kind(), AppCommand::Kind::settings);
        const AppCommand video = AppCommand::capture(CaptureMode::video);
        QCOMPARE(video.kind(), AppCommand::Kind::capture);
        QCOMPARE(video.mode(), CaptureMode::video);
        QVERIFY(!(video == AppCommand::capture(CaptureMode::screen)));
    }

    void modeWords()
    {
        const QStringList words { u"region"_s, u"window"_s, u"screen"_s, u"video"_s };
        for (CaptureMode mode : CaptureModes::allCases) {
            const QString word = words.at(qsizetype(CaptureModes::rawValue(mode)) - 1);
            QCOMPARE(AppCommand::modeName(mode), word);
            QCOMPARE(AppCommand::modeNamed(word), std::optional(mode));
        }
        QCOMPARE(AppCommand::modeNamed(u"Region"_s), std::nullopt);
        QCOMPARE(AppCommand::modeNamed(QString()), std::nullopt);
        QCOMPARE(AppCommand::modeList(), u"region, window, screen ya da video"_s);
        QCOMPARE(AppCommand::unknownModeText(u"x"_s),
            u"Bilinmeyen yakalama türü: x (region, window, screen ya da video olmalı)."_s);
    }

    void wrongMessages_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray() << u"Boş komut."_s;
        QTest::newRow("unknown") << QByteArray("quit") << u"Anlaşılmayan komut: quit"_s;
        QTest::newRow("upper case") << QByteArray("Settings") << u"Anlaşılmayan komut: Settings"_s;
        QTest::newRow("trailing space") << QByteArray("reopen ") << u"Anlaşılmayan komut: reopen "_s;
        QTest::newRow("carriage return") << QByteArray("settings\r") << u"Anlaşılmayan komut: settings?"_s;
        QTest::newRow("capture without a mode") << QByteArray(
            "capture") << u"capture komutu bir yakalama türü ister: region, window, screen ya da video."_s;
        QTest::newRow("unknown mode")
            << QByteArray("capture bogus")
            << u"Bilinmeyen yakalama türü: bogus (region, window, screen ya da video olmalı)."_s;
        QTest::newRow("two spaces") << QByteArray("capture  screen")
                                    << u"Anlaşılmayan komut: capture  screen"_s;
        QTest::newRow("a tab") << QByteArray("capture\tscreen") << u"Anlaşılmayan komut: capture?screen"_s;
        QTest::newRow("too many words")
            << QByteArray("capture screen now") << u"Anlaşılmayan komut: capture screen now"_s;
        QTest::newRow("a long line is cut")
            << QByteArray(100, 'x') << u"Anlaşılmayan komut: "_s + QString(60, u'x') + u'…';
        QTest::newRow("not UTF-8")
            << QByteArray("capture \xff")
            << u"Bilinmeyen yakalama türü: \uFFFD (region, window, screen ya da video olmalı)."_s;
    }

    void wrongMessages()
    {
        QFETCH(QByteArray, message);
        QFETCH(QString, error);
        const Result<AppCommand> parsed = AppCommand::fromMessage(message);
        QVERIFY(!parsed.ok());
        QCOMPARE(parsed.error().localizedDescription(), error);
    }
};

QTEST_APPLESS_MAIN(TestAppCommand)
#include "tst_appcommand.moc"
