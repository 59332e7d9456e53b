#pragma once

class QProcess;

namespace tessly::test {

/// Stops a child and returns once it has stopped: after the signal alone it may go on for a while.
/// Throws std::runtime_error where there is nothing to stop.
void freeze(const QProcess& process);

/// Lets a stopped child go on. Throws std::runtime_error where it has ended.
void thaw(const QProcess& process);

} // namespace tessly::test
