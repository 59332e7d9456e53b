#include "TerminationSignals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace tessly {

namespace {

constexpr std::array terminating = {SIGTERM, SIGINT, SIGHUP};

// A signal handler reaches nothing but globals.
std::atomic<int> wakeFD = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void wake(int /*signal*/)
{
    const int interrupted = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wakeFD, &one, sizeof one);
    errno = interrupted;
}

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : terminating) {
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> terminate)
{
    const int file = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    wakeFD = file;
    m_notifier = std::make_unique<QSocketNotifier>(file, QSocketNotifier::Read);
    QObject::connect(
        m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
        [file, terminate = std::move(terminate)] {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto bytes = read(file, &count, sizeof count);
            terminate();
        });
    setHandler(wake);
}

TerminationSignals::~TerminationSignals()
{
    setHandler(SIG_DFL);
    m_notifier.reset();
    close(wakeFD.exchange(-1));
}

} // namespace tessly
