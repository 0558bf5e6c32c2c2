#include "EditorStatus.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestEditorStatus : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sizeInPixels()
    {
        QCOMPARE(EditorStatus::text(QSize(1440, 900)), u"1440 × 900 piksel"_s);
        QCOMPARE(EditorStatus::text(QSize(1, 70000)), u"1 × 70000 piksel"_s);
    }

    void afterACopy()
    {
        QCOMPARE(EditorStatus::copied(), u"Panoya kopyalandı"_s);
        QCOMPARE(EditorStatus::text(QSize(1440, 900), EditorStatus::copied()),
            u"1440 × 900 piksel • Panoya kopyalandı"_s);
    }

    void afterASave()
    {
        QCOMPARE(EditorStatus::saved(u"Vexet_2025-01-02_03-04-05.jpg"_s),
            u"Kaydedildi: Vexet_2025-01-02_03-04-05.jpg"_s);
        QCOMPARE(EditorStatus::text(QSize(640, 480), EditorStatus::saved(u"a.png"_s)),
            u"640 × 480 piksel • Kaydedildi: a.png"_s);
    }

    void noImageNoText()
    {
        QCOMPARE(EditorStatus::text(QSize()), QString());
        QCOMPARE(EditorStatus::text(QSize(), EditorStatus::copied()), QString());
    }
};

QTEST_APPLESS_MAIN(TestEditorStatus)
#include "tst_editorstatus.moc"
