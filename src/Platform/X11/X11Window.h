#pragma once

#include "PasteChord.h"

#include <QString>

#include <xcb/xcb.h>

#include <atomic>
#include <mutex>
#include <optional>

namespace tessly {

/// A window that is in front or has been. Made and changed on the loop thread, read by any.
class X11Window
{
public:
    /// Whose window it is.
    struct Owner
    {
        std::optional<QString> name;
        /// As `RunningApplication::bundleIdentifier` has it.
        std::optional<QString> applicationID;
        PasteChord chord = PasteChord::controlV;
    };

    X11Window(xcb_window_t id, Owner owner)
        : m_id(id)
        , m_owner(std::move(owner))
    {
    }

    [[nodiscard]] xcb_window_t id() const { return m_id; }

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

    /// Whether it was destroyed. The server may give its id to a new window afterwards.
    [[nodiscard]] bool isGone() const { return m_isGone; }
    void setGone() { m_isGone = true; }

private:
    const xcb_window_t m_id;
    mutable std::mutex m_mutex;
    Owner m_owner;
    std::atomic<bool> m_isGone = false;
};

} // namespace tessly
