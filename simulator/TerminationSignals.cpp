#include "simulator/TerminationSignals.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

int openSignals()
{
    sigset_t awaited;
    sigemptyset(&awaited);
    sigaddset(&awaited, SIGINT);
    sigaddset(&awaited, SIGTERM);
    struct sigaction hangUp = {};
    sigaction(SIGHUP, nullptr, &hangUp);
    if (hangUp.sa_handler != SIG_IGN) // nohup(1)
        sigaddset(&awaited, SIGHUP);
    sigprocmask(SIG_BLOCK, &awaited, nullptr);
    return signalfd(-1, &awaited, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
    : m_fd(openSignals())
    , m_notifier(m_fd, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
        [onSignal = std::move(onSignal)] { onSignal(); });
}

TerminationSignals::~TerminationSignals()
{
    m_notifier.setEnabled(false);
    close(m_fd);
}

} // namespace companion::simulator
