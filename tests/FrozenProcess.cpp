#include "FrozenProcess.h"

#include <QProcess>

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <sys/wait.h>

namespace tessly::test {

namespace {

pid_t idOf(const QProcess& process)
{
    const auto id = static_cast<pid_t>(process.processId());
    if (id <= 0) {
        throw std::runtime_error("The process does not run.");
    }
    return id;
}

} // namespace

void freeze(const QProcess& process)
{
    const pid_t id = idOf(process);
    siginfo_t change{};
    int result = kill(id, SIGSTOP);
    if (result == 0) {
        do {
            result = waitid(P_PID, static_cast<id_t>(id), &change, WSTOPPED | WEXITED | WNOWAIT);
        } while (result != 0 && errno == EINTR);
    }
    if (result != 0 || change.si_code != CLD_STOPPED) {
        throw std::runtime_error("The process has not stopped.");
    }
}

void thaw(const QProcess& process)
{
    kill(idOf(process), SIGCONT);
}

} // namespace tessly::test
