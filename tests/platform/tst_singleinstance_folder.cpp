#include "SingleInstance.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const QString& path)
{
    struct stat info { };
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode : 0;
}

bool makeFolder(const QString& path, mode_t mode)
{
    return ::mkdir(QFile::encodeName(path).constData(), mode) == 0
        && ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

// Why privateFolder() refused, or what it chose.
QString refusal(const QString& runtimeDir, const QString& fallback)
{
    const Result<QString> folder = SingleInstance::privateFolder(runtimeDir, fallback);
    return folder.ok() ? u"chosen: "_s + folder.value() : folder.error().localizedDescription();
}

} // namespace

// Where the single-instance socket may live: only in a folder no other user can enter.
class TestSingleInstanceFolder : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

private Q_SLOTS:
    void theRuntimeFolderIsUsedWhenItIsPrivate()
    {
        const QString runtime = m_dir.filePath(u"runtime"_s);
        QVERIFY(makeFolder(runtime, 0700));
        const QString fallback = m_dir.filePath(u"fallback-unused"_s);
        const Result<QString> folder = SingleInstance::privateFolder(runtime, fallback);
        QVERIFY(folder.ok());
        QCOMPARE(folder.value(), runtime);
        QVERIFY(!QFile::exists(fallback));
    }

    void aPrivateFolderIsMadeWithMode0700()
    {
        const QString fallback = m_dir.filePath(u"made"_s);
        // Even a umask that takes the owner's bits away does not leave it unusable.
        const mode_t before = ::umask(0777);
        const Result<QString> folder = SingleInstance::privateFolder(QString(), fallback);
        ::umask(before);
        QVERIFY(folder.ok());
        QCOMPARE(folder.value(), fallback);
        QVERIFY(S_ISDIR(modeOf(fallback)));
        QCOMPARE(modeOf(fallback) & 07777, mode_t(0700));
        // Made once, used again.
        QCOMPARE(SingleInstance::privateFolder(QString(), fallback).value(), fallback);
    }

    void anUnsafeRuntimeFolderGivesWayToThePrivateOne()
    {
        const QString runtime = m_dir.filePath(u"open-runtime"_s);
        QVERIFY(makeFolder(runtime, 0755));
        const QString fallback = m_dir.filePath(u"instead"_s);
        const Result<QString> folder = SingleInstance::privateFolder(runtime, fallback);
        QVERIFY(folder.ok());
        QCOMPARE(folder.value(), fallback);
        QCOMPARE(modeOf(fallback) & 07777, mode_t(0700));
    }

    void unsafeFoldersAreRefused()
    {
        const QString open = m_dir.filePath(u"open"_s);
        QVERIFY(makeFolder(open, 0755));
        QCOMPARE(refusal(QString(), open), open + u" klasörünün izinleri 755, 700 olmalı."_s);
        const QString groupReadable = m_dir.filePath(u"group"_s);
        QVERIFY(makeFolder(groupReadable, 0750));
        QCOMPARE(SingleInstance::unsafeFolderReason(groupReadable),
            groupReadable + u" klasörünün izinleri 750, 700 olmalı."_s);

        const QString target = m_dir.filePath(u"target"_s);
        QVERIFY(makeFolder(target, 0700));
        const QString link = m_dir.filePath(u"link"_s);
        QVERIFY(QFile::link(target, link));
        QCOMPARE(refusal(QString(), link), link + u" gerçek bir klasör değil."_s);

        const QString file = m_dir.filePath(u"file"_s);
        QFile plain(file);
        QVERIFY(plain.open(QIODevice::WriteOnly));
        plain.close();
        QCOMPARE(SingleInstance::unsafeFolderReason(file), file + u" gerçek bir klasör değil."_s);

        QString foreign = u"/"_s; // root's, for anyone else
        if (::geteuid() == 0) {
            foreign = m_dir.filePath(u"nobodys"_s);
            QVERIFY(makeFolder(foreign, 0700));
            QCOMPARE(::chown(QFile::encodeName(foreign).constData(), 65534, 65534), 0);
        }
        QCOMPARE(refusal(QString(), foreign), foreign + u" başka bir kullanıcıya ait."_s);

        const QString unreachable = m_dir.filePath(u"missing/vexet-1"_s);
        QCOMPARE(refusal(QString(), unreachable), unreachable + u" oluşturulamadı."_s);

        // Both places refused: both reasons are told.
        QCOMPARE(refusal(link, open),
            link + u" gerçek bir klasör değil. "_s + open + u" klasörünün izinleri 755, 700 olmalı."_s);
        QCOMPARE(SingleInstance::unsafeFolderReason(m_dir.filePath(u"nothing"_s)),
            m_dir.filePath(u"nothing"_s) + u" bulunamadı."_s);
    }

    void theDefaultSocketIsInTheRuntimeFolderElseInAPrivateTemporaryOne()
    {
        const auto restore = [](const char* name, std::optional<QByteArray> value) {
            if (value)
                qputenv(name, *value);
            else
                qunsetenv(name);
        };
        const auto saved = [](const char* name) {
            return qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt;
        };
        const std::optional<QByteArray> runtimeBefore = saved("XDG_RUNTIME_DIR");
        const std::optional<QByteArray> tmpBefore = saved("TMPDIR");
        const QString runtime = m_dir.filePath(u"session"_s);
        QVERIFY(makeFolder(runtime, 0700));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
        const Result<QString> inRuntime = SingleInstance::defaultSocketPath();
        const QString temporary = m_dir.filePath(u"tmp"_s);
        QVERIFY(makeFolder(temporary, 0755));
        qunsetenv("XDG_RUNTIME_DIR");
        qputenv("TMPDIR", QFile::encodeName(temporary));
        const Result<QString> inTemporary = SingleInstance::defaultSocketPath();
        restore("XDG_RUNTIME_DIR", runtimeBefore);
        restore("TMPDIR", tmpBefore);

        QVERIFY(inRuntime.ok());
        QCOMPARE(inRuntime.value(), runtime + u"/vexet.socket"_s);
        QVERIFY(inTemporary.ok());
        const QString folder = temporary + u"/vexet-%1"_s.arg(::geteuid());
        QCOMPARE(inTemporary.value(), folder + u"/vexet.socket"_s);
        QCOMPARE(modeOf(folder) & 07777, mode_t(0700));
    }
};

QTEST_GUILESS_MAIN(TestSingleInstanceFolder)
#include "tst_singleinstance_folder.moc"
