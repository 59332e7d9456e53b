#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace tessly {

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One at a time in a process.
class TerminationSignals
{
public:
    explicit TerminationSignals(std::function<void()> terminate);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace tessly
