#include "CompositorPictures.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList outputArguments(const QString& name)
{
    return { u"-o"_s, name };
}

QStringList regionArguments(const QRect& rect)
{
    return { u"-g"_s, u"%1,%2 %3x%4"_s.arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height()) };
}

} // namespace

QImage CompositorPictures::grim(const QStringList& arguments)
{
    // PPM: nothing to compress, the fastest of grim's formats.
    QProcess process;
    process.start(u"grim"_s, QStringList { u"-t"_s, u"ppm"_s } + arguments + QStringList { u"-"_s });
    if (!process.waitForFinished(20000)) {
        m_error = u"grim %1: %2"_s.arg(arguments.join(u' '), process.errorString());
        process.kill();
        process.waitForFinished();
        return {};
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        m_error = u"grim %1 failed: %2"_s.arg(
            arguments.join(u' '), QString::fromUtf8(process.readAllStandardError()));
        return {};
    }
    QImage image = QImage::fromData(process.readAllStandardOutput(), "PPM");
    if (image.isNull()) {
        m_error = u"grim %1: not a picture"_s.arg(arguments.join(u' '));
        return {};
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage CompositorPictures::stable(const QStringList& arguments, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    QImage previous = grim(arguments);
    while (!previous.isNull() && !deadline.hasExpired()) {
        QImage next = grim(arguments);
        if (next.isNull())
            return {};
        if (next == previous)
            return next;
        previous = std::move(next);
        QTest::qWait(20); // let the program that draws finish its frame
    }
    if (!previous.isNull())
        m_error
            = u"grim %1: the picture did not settle within %2 ms"_s.arg(arguments.join(u' ')).arg(timeoutMs);
    return {};
}

QImage CompositorPictures::output(const QString& name)
{
    return grim(outputArguments(name));
}

QImage CompositorPictures::region(const QRect& rect)
{
    return grim(regionArguments(rect));
}

QImage CompositorPictures::stableOutput(const QString& name, int timeoutMs)
{
    return stable(outputArguments(name), timeoutMs);
}

QImage CompositorPictures::stableRegion(const QRect& rect, int timeoutMs)
{
    return stable(regionArguments(rect), timeoutMs);
}

QString CompositorPictures::difference(const QImage& shown, const QImage& expected)
{
    if (shown.size() != expected.size()) {
        return u"a %1x%2 picture instead of %3x%4"_s.arg(shown.width())
            .arg(shown.height())
            .arg(expected.width())
            .arg(expected.height());
    }
    const QImage a = shown.convertToFormat(QImage::Format_RGB32);
    const QImage b = expected.convertToFormat(QImage::Format_RGB32);
    qsizetype differing = 0;
    QRect where;
    for (int y = 0; y < b.height(); ++y) {
        const auto* shownLine = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* expectedLine = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < b.width(); ++x) {
            if ((shownLine[x] & 0xffffff) != (expectedLine[x] & 0xffffff)) {
                ++differing;
                where |= QRect(x, y, 1, 1);
            }
        }
    }
    if (differing == 0)
        return {};
    return u"%1 pixels differ, within %2,%3 %4x%5"_s.arg(differing)
        .arg(where.x())
        .arg(where.y())
        .arg(where.width())
        .arg(where.height());
}

QString CompositorPictures::waitForOutput(const QString& name, const QImage& expected, int timeoutMs)
{
    QString different;
    const auto same = [&] {
        const QImage shown = output(name);
        different = shown.isNull() ? m_error : difference(shown, expected);
        return different.isEmpty();
    };
    if (QTest::qWaitFor(same, timeoutMs))
        return {};
    return name + u": "_s + different;
}
