#pragma once

#include "ClipStoreError.h"

#include <chrono>
#include <functional>
#include <utility>

namespace tessly {

/// Takes a step of the opening, and takes it again while the disk fails it, for two seconds: what a
/// disk says of a file while it does not answer is not to be believed. The time that the tries take
/// counts as well as that between them.
class ClipRetries
{
public:
    struct Time
    {
        std::function<std::chrono::steady_clock::time_point()> now;
        std::function<void(std::chrono::milliseconds)> sleep;
    };

    /// `isToBeTriedAgain` tells whether an error of the step may pass; it is asked for each.
    ClipRetries(Time time, std::function<bool(const ClipStoreError&)> isToBeTriedAgain)
        : m_time(std::move(time))
        , m_isToBeTriedAgain(std::move(isToBeTriedAgain))
    {
    }

    /// What `step` returns. Throws what it threw last.
    template <typename Step>
    auto take(Step step) const
    {
        // What was asked to sleep is counted as such, since a sleep may end early.
        std::chrono::steady_clock::duration waited{};
        for (;;) {
            const auto begin = m_time.now();
            try {
                return step();
            } catch (const ClipStoreError& error) {
                waited += m_time.now() - begin;
                if (waited >= timeLimit || !m_isToBeTriedAgain(error)) {
                    throw;
                }
            }
            m_time.sleep(timeBetweenTries);
            waited += timeBetweenTries;
        }
    }

    static constexpr std::chrono::milliseconds timeLimit{2000};
    static constexpr std::chrono::milliseconds timeBetweenTries{100};

private:
    Time m_time;
    std::function<bool(const ClipStoreError&)> m_isToBeTriedAgain;
};

} // namespace tessly
