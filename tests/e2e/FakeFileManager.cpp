// A stand-in for the desktop's file manager on the session bus: it owns the name
// org.freedesktop.FileManager1, answers ShowItems and appends every URI it is asked to show to
// the file named on its command line, one a line. It prints "ready" once the name is its own.
//
//   vexet-fake-file-manager OUTPUT_FILE

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QFile>
#include <QTextStream>

using namespace Qt::StringLiterals;

class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    explicit FakeFileManager(QString output)
        : m_output(std::move(output))
    {
    }

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString& startupId)
    {
        Q_UNUSED(startupId)
        QFile file(m_output);
        if (!file.open(QIODevice::Append | QIODevice::Text))
            return;
        QTextStream out(&file);
        for (const QString& uri : uris)
            out << uri << '\n';
    }

private:
    QString m_output;
};

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2) {
        QTextStream(stderr) << "usage: " << arguments.value(0) << " OUTPUT_FILE\n";
        return 2;
    }
    FakeFileManager manager(arguments.at(1));
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(u"/org/freedesktop/FileManager1"_s, &manager, QDBusConnection::ExportAllSlots)
        || !bus.registerService(u"org.freedesktop.FileManager1"_s)) {
        QTextStream(stderr) << "cannot own org.freedesktop.FileManager1: " << bus.lastError().message()
                            << '\n';
        return 1;
    }
    QTextStream(stdout) << "ready" << Qt::endl;
    return QCoreApplication::exec();
}

#include "FakeFileManager.moc"
