#pragma once

#include "PasteChord.h"

#include <QString>
#include <QStringList>

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

namespace tessly {

/// A window that is in front or has been. Made and changed on the thread that hears of windows,
/// read by any.
class TrackedWindow
{
public:
    /// Whose window it is.
    struct Owner
    {
        std::optional<QString> name;
        /// As `RunningApplication::bundleIdentifier` has it.
        std::optional<QString> applicationID;
        /// As `RunningApplication::names` has them.
        QStringList names;
        PasteChord chord = PasteChord::controlV;
    };

    explicit TrackedWindow(Owner owner)
        : m_owner(std::move(owner))
    {
    }

    [[nodiscard]] Owner owner() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_owner;
    }
    /// For windows that tell late what they are.
    void setOwner(Owner owner)
    {
        const std::scoped_lock lock(m_mutex);
        m_owner = std::move(owner);
    }

    /// Whether it is gone for good.
    [[nodiscard]] bool isGone() const { return m_isGone; }
    void setGone() { m_isGone = true; }

private:
    mutable std::mutex m_mutex;
    Owner m_owner;
    std::atomic<bool> m_isGone = false;
};

} // namespace tessly
