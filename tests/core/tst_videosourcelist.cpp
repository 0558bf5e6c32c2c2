#include "VideoSourceList.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestVideoSourceList : public QObject {
    Q_OBJECT

    static VideoWindow window(
        quint32 id, const QString& app, const QString& title, QSize size = { 400, 300 }, quint32 pid = 100)
    {
        return VideoWindow { id, app, title, QRect(QPoint(10, 10), size), pid };
    }

private Q_SLOTS:
    void displaysAreListedByNameOrPosition()
    {
        QCOMPARE(VideoSourceList::displayTitle(VideoDisplay { 2, u"Studio Display"_s, {}, 1.0 }, 1),
            u"Studio Display [2]"_s);
        QCOMPARE(
            VideoSourceList::displayTitle(VideoDisplay { 453, QString(), {}, 1.0 }, 2), u"Ekran 2 [453]"_s);
    }

    void windowsNameTheirApplicationAndTitle()
    {
        QCOMPARE(VideoSourceList::windowTitle(window(77, u"Gedit"_s, u"notlar.txt"_s)),
            u"Gedit — notlar.txt [77]"_s);
        QCOMPARE(
            VideoSourceList::windowTitle(window(78, u"Gedit"_s, QString())), u"Gedit — Adsız pencere [78]"_s);
        QCOMPARE(VideoSourceList::windowTitle(window(79, QString(), u"x"_s)), u"Uygulama — x [79]"_s);
    }

    void ownAndTinyWindowsAreNeverOffered()
    {
        const QList<VideoWindow> offered = VideoSourceList::offered(
            { window(1, u"A"_s, u"own"_s, { 400, 300 }, 42), window(2, u"A"_s, u"narrow"_s, { 32, 500 }),
                window(3, u"A"_s, u"low"_s, { 500, 32 }), window(4, u"A"_s, u"ok"_s, { 33, 33 }),
                window(5, u"A"_s, u"no pid"_s, { 400, 300 }, 0) },
            42);
        QList<quint32> ids;
        for (const VideoWindow& w : offered)
            ids << w.sourceId;
        QCOMPARE(ids, (QList<quint32> { 4, 5 }));
    }

    void windowsAreSortedByApplicationKeepingTheirOrderWithinOne()
    {
        const QList<VideoWindow> offered = VideoSourceList::offered(
            { window(1, u"Zeta"_s, u"z1"_s), window(2, u"Beta"_s, u"b1"_s), window(3, u"Zeta"_s, u"z2"_s),
                window(4, QString(), u"none"_s), window(5, u"Beta"_s, u"b2"_s) },
            999);
        QList<quint32> ids;
        for (const VideoWindow& w : offered)
            ids << w.sourceId;
        QCOMPARE(ids, (QList<quint32> { 4, 2, 5, 1, 3 }));
    }

    void noWindowsGiveAnEmptyList() { QVERIFY(VideoSourceList::offered({}, 1).isEmpty()); }
};

QTEST_GUILESS_MAIN(TestVideoSourceList)
#include "tst_videosourcelist.moc"
