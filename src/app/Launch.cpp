#include "Launch.h"

#include "AppDelegate.h"
#include "SingleInstance.h"

#include <QStringList>
#include <QTimer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void print(FILE* stream, const QString& text)
{
    std::fputs(qPrintable(text), stream);
    std::fflush(stream);
}

QStringList argumentsOf(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

} // namespace

Launch::Launch(int argc, char** argv)
    : m_commandLine(CommandLine::parse(argumentsOf(argc, argv)))
{
}

std::optional<int> Launch::handOver()
{
    switch (m_commandLine.outcome()) {
    case CommandLine::Outcome::help:
        print(stdout, CommandLine::help());
        return success;
    case CommandLine::Outcome::version:
        print(stdout, CommandLine::versionText(QStringLiteral(VEXET_VERSION)));
        return success;
    case CommandLine::Outcome::usageError:
        print(stderr, m_commandLine.usageErrorText());
        return usageError;
    case CommandLine::Outcome::run:
        break;
    }

    const Result<QString> socketPath = SingleInstance::defaultSocketPath();
    if (!socketPath) {
        print(stderr,
            u"vexet: Komut soketi için güvenli bir klasör bulunamadı. %1 Vexet, çalışan başka bir "
            "Vexet’e bakmadan başlıyor.\n"_s.arg(socketPath.error().localizedDescription()));
        return std::nullopt;
    }
    m_socketPath = socketPath.value();
    SingleInstance::HandOver handed = SingleInstance::handOver(*m_socketPath, m_commandLine.command());
    // Nobody answered: this process becomes Vexet, unless another one is starting at this moment
    // (two shortcut presses in a row), which then takes the command once it listens.
    if (handed.outcome == SingleInstance::HandOver::Outcome::nobodyRunning
        && !SingleInstance::takeLock(*m_socketPath))
        handed = SingleInstance::handOver(*m_socketPath, m_commandLine.command(), 10000, true);
    switch (handed.outcome) {
    case SingleInstance::HandOver::Outcome::accepted:
        return success;
    case SingleInstance::HandOver::Outcome::refused:
        print(stderr, u"vexet: %1\n"_s.arg(handed.error));
        return refusedByRunningInstance;
    case SingleInstance::HandOver::Outcome::nobodyRunning:
        break;
    }
    return std::nullopt;
}

void Launch::start(AppDelegate& delegate)
{
    if (m_socketPath) {
        // Owned by the delegate, so the socket closes while the application still exists.
        auto* instance = new SingleInstance(*m_socketPath, &delegate);
        if (instance->listen()) {
            QObject::connect(instance, &SingleInstance::commandReceived, &delegate, &AppDelegate::runCommand);
        } else {
            print(stderr,
                u"vexet: %1 soketi açılamadı; sonraki başlatmalar komutlarını bu Vexet’e "
                "iletemez.\n"_s.arg(*m_socketPath));
        }
    }
    // A start without a command only launches; reopening is what a later start asks for.
    QTimer::singleShot(0, &delegate, [&delegate, command = m_commandLine.command()] {
        delegate.applicationDidFinishLaunching();
        if (command.kind() != AppCommand::Kind::reopen)
            delegate.runCommand(command);
    });
}
