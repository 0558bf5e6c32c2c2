#include "UnixSignals.h"

#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int g_pipe[2] = { -1, -1 };

void handleSignal(int signalNumber)
{
    const int savedErrno = errno;
    const unsigned char byte = static_cast<unsigned char>(signalNumber);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
    errno = savedErrno;
}

bool installHandler(int signalNumber)
{
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    return ::sigaction(signalNumber, &action, nullptr) == 0;
}

void restoreDefault(int signalNumber)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    ::sigaction(signalNumber, &action, nullptr);
}

} // namespace

UnixSignals::UnixSignals(QObject* parent)
    : QObject(parent)
{
    if (g_pipe[0] != -1 || ::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    if (!installHandler(SIGTERM) || !installHandler(SIGINT)) {
        restoreDefault(SIGTERM);
        restoreDefault(SIGINT);
        return;
    }
    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &UnixSignals::readSignal);
}

UnixSignals::~UnixSignals()
{
    if (!m_notifier)
        return;
    restoreDefault(SIGTERM);
    restoreDefault(SIGINT);
    delete m_notifier;
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}

void UnixSignals::readSignal()
{
    unsigned char byte = 0;
    while (::read(g_pipe[0], &byte, 1) == 1)
        Q_EMIT terminationRequested(byte);
}
