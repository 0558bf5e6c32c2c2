#include "SaveName.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestSaveName : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void proposedNameCarriesTheLocalDateAndTime()
    {
        const QDateTime when(QDate(2025, 1, 2), QTime(3, 4, 5));
        QCOMPARE(SaveName::proposed(when), u"Vexet_2025-01-02_03-04-05.png"_s);
    }

    void hoursRunToTwentyFour()
    {
        const QDateTime when(QDate(2024, 12, 31), QTime(23, 59, 58, 999));
        QCOMPARE(SaveName::proposed(when), u"Vexet_2024-12-31_23-59-58.png"_s);
    }

    void extensions()
    {
        QCOMPARE(SaveName::extension(ImageFormat::png), u".png"_s);
        QCOMPARE(SaveName::extension(ImageFormat::jpeg), u".jpg"_s);
    }

    void formatIndexOneIsJpegAnyOtherPng()
    {
        QCOMPARE(ImageFormats::at(0), ImageFormat::png);
        QCOMPARE(ImageFormats::at(1), ImageFormat::jpeg);
        QCOMPARE(ImageFormats::at(2), ImageFormat::png);
        QCOMPARE(ImageFormats::at(-1), ImageFormat::png);
    }

    void choosingJpegAndBackSwapsTheExtension()
    {
        const QString proposed = u"Vexet_2025-01-02_03-04-05.png"_s;
        const QString jpeg = SaveName::withFormat(proposed, ImageFormat::jpeg);
        QCOMPARE(jpeg, u"Vexet_2025-01-02_03-04-05.jpg"_s);
        QCOMPARE(SaveName::withFormat(jpeg, ImageFormat::png), proposed);
        QCOMPARE(SaveName::withFormat(proposed, ImageFormat::png), proposed);
    }

    void onlyTheLastExtensionIsReplaced()
    {
        QCOMPARE(SaveName::withFormat(u"ekran.v2.jpeg"_s, ImageFormat::png), u"ekran.v2.png"_s);
        QCOMPARE(SaveName::withFormat(u"arşiv.tar.gz"_s, ImageFormat::jpeg), u"arşiv.tar.jpg"_s);
    }

    void aNameWithoutExtensionGainsOne()
    {
        QCOMPARE(SaveName::withFormat(u"ekran"_s, ImageFormat::jpeg), u"ekran.jpg"_s);
        // A leading dot makes a hidden name, not an extension.
        QCOMPARE(SaveName::withFormat(u".gizli"_s, ImageFormat::png), u".gizli.png"_s);
    }
};

QTEST_APPLESS_MAIN(TestSaveName)
#include "tst_savename.moc"
