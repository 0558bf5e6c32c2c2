// bench_screencast_session: opens a ScreenCast session through the desktop's portal (the desktop's
// chooser picks the monitor) and runs a command on its PipeWire stream, the way a recorder of
// reference would: "{fd}" and "{node}" in the command's arguments become the PipeWire descriptor
// (handed down as descriptor 3) and the stream's node. Exits with the command's status.
//   bench_screencast_session COMMAND [ARGS...]
#include "PortalScreenCast.h"

#include <QGuiApplication>
#include <QProcess>
#include <QTextStream>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int childDescriptor = 3;

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    QStringList command = QCoreApplication::arguments().mid(1);
    if (command.isEmpty()) {
        QTextStream(stderr) << "usage: bench_screencast_session COMMAND [ARGS...]\n";
        return 2;
    }
    int status = 1;
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    PortalScreenCast cast;
    QObject::connect(
        &cast, &PortalScreenCast::opened, &application, [&](const PortalScreenCast::Outcome& outcome) {
            if (outcome.code != PortalScreenCast::Outcome::Code::opened) {
                QTextStream(stderr) << "no stream: " << outcome.reason << "\n";
                QCoreApplication::exit(1);
                return;
            }
            for (QString& argument : command) {
                argument.replace(u"{fd}"_s, QString::number(childDescriptor));
                argument.replace(u"{node}"_s, QString::number(outcome.node));
            }
            const int remote = outcome.remote.fileDescriptor();
            process.setChildProcessModifier([remote] {
                // Async-signal-safe calls only: the descriptor becomes 3 and stays open across exec.
                if (::dup2(remote, childDescriptor) < 0)
                    ::_exit(126);
            });
            QObject::connect(&process, &QProcess::finished, &application, [&](int code) {
                status = code;
                QCoreApplication::quit();
            });
            process.start(command.first(), command.mid(1));
        });
    cast.open({ PortalScreenCast::SourceType::monitor, false, QString(), QString() });
    QCoreApplication::exec();
    return status;
}
