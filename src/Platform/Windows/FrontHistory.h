#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tessly {

/// Which windows were in front lately, and until when. Bounded in number and age. Any thread.
template <typename Window>
class FrontHistory
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Windows = std::vector<std::shared_ptr<const Window>>;

    /// How many windows are remembered: more than a user can go through in the time that counts.
    static constexpr std::size_t capacity = 64;
    /// For how long: what is asked about is less than a second ago, but the desktop's answer may
    /// have had to be waited for.
    static constexpr auto memory = std::chrono::seconds(30);

    /// The window was in front until now; one that was remembered already is moved to the end.
    void add(std::shared_ptr<const Window> window, TimePoint now = std::chrono::steady_clock::now())
    {
        // Windows may go with their last reference: not under the lock.
        std::vector<Entry> forgotten;
        const std::scoped_lock lock(m_mutex);
        const auto kept = std::ranges::stable_partition(m_entries, [&](const Entry& entry) {
            return entry.window == window || entry.until + memory < now;
        });
        forgotten.assign(
            std::make_move_iterator(m_entries.begin()), std::make_move_iterator(kept.begin()));
        m_entries.erase(m_entries.begin(), kept.begin());
        if (m_entries.size() == capacity) {
            forgotten.push_back(std::move(m_entries.front()));
            m_entries.erase(m_entries.begin());
        }
        m_entries.push_back({.window = std::move(window), .until = now});
    }

    /// The windows that were in front at that moment or later and are not any more, in the order in
    /// which they ceased to be.
    [[nodiscard]] Windows since(TimePoint moment) const
    {
        Windows windows;
        const std::scoped_lock lock(m_mutex);
        for (const auto& entry : m_entries) {
            if (entry.until >= moment) {
                windows.push_back(entry.window);
            }
        }
        return windows;
    }

private:
    struct Entry
    {
        std::shared_ptr<const Window> window;
        TimePoint until;
    };

    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

} // namespace tessly
