#pragma once

#include "Clip.h"

#include <QFuture>
#include <QPromise>

#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <vector>

namespace tessly {

/// A copy on its way into the history.
struct WaitingCopy
{
    /// What the entry is called if its content is new.
    QUuid id;
    /// When it was made, seconds since 1970-01-01 00:00:00 UTC; none for now.
    std::optional<double> time;
    ClipPayload payload;
    std::optional<QString> sourceAppName;
    std::optional<QString> sourceBundleID;
};

/// Thrown for a copy that had to make room for later ones: it is not recorded, and to be let go of.
/// The log says so.
class CopyGivenUp final : public std::exception
{
public:
    [[nodiscard]] const char* what() const noexcept override;
};

/// The copies that are made before the history can take any, in memory and in their order. Any
/// thread.
class WaitingCopies
{
public:
    /// Bytes of content that wait at the most.
    static constexpr qint64 mostBytes = 50'000'000;

    struct Waiting
    {
        WaitingCopy copy;
        QPromise<Clip> saved;
    };

    WaitingCopies() = default;
    ~WaitingCopies();
    WaitingCopies(const WaitingCopies&) = delete;
    WaitingCopies& operator=(const WaitingCopies&) = delete;

    /// Adds one, and gives up the oldest while there is more than may wait; one that is larger than
    /// that by itself is given up at once, and the others stay. What is returned ends when it is
    /// saved, with CopyGivenUp if it never will be.
    [[nodiscard]] QFuture<Clip> add(WaitingCopy copy);
    /// Takes one out, to save it and to keep the promise; none if it was given up.
    [[nodiscard]] std::optional<Waiting> take(QUuid id);
    /// The oldest first.
    [[nodiscard]] std::vector<WaitingCopy> all() const;

private:
    static void giveUp(Waiting& waiting);

    mutable std::mutex m_mutex;
    std::deque<Waiting> m_waiting;
    qint64 m_bytes = 0;
};

} // namespace tessly
