#pragma once

#include "WaylandEventLoop.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

struct wl_interface;
struct wl_registry;

namespace tessly {

/// What the compositor has to offer to everyone, as it comes and goes. Loop thread, or before the
/// loop is started.
class WaylandRegistry
{
public:
    /// The compositor's number for one of them.
    using Name = std::uint32_t;
    struct Changes
    {
        std::function<void(Name name, const std::string& interface)> added = {};
        std::function<void(Name name)> removed = {};
    };

    /// What there is at the start is known after one round trip.
    explicit WaylandRegistry(WaylandEventLoop& loop);
    ~WaylandRegistry();
    WaylandRegistry(const WaylandRegistry&) = delete;
    WaylandRegistry& operator=(const WaylandRegistry&) = delete;

    /// Tells of what comes and goes from now on.
    void setChanges(Changes changes) { m_changes = std::move(changes); }

    /// The first with this interface that came, 0 if there is none.
    [[nodiscard]] Name find(const std::string& interface) const;

    /// All with this interface, in the order in which they came.
    [[nodiscard]] std::vector<Name> findAll(const std::string& interface) const;

    /// The interfaces of all that there is.
    [[nodiscard]] std::set<std::string> interfaces() const;

    /// An object for it, to be destroyed by the caller; null if it is not there. Of the versions
    /// that both sides know, `newest` at the most.
    template <typename Object>
    [[nodiscard]] Object* bind(Name name, const wl_interface& interface, std::uint32_t newest) const
    {
        return static_cast<Object*>(bindAny(name, interface, newest));
    }

private:
    struct Global
    {
        std::string interface;
        std::uint32_t version;
    };

    [[nodiscard]] void*
    bindAny(Name name, const wl_interface& interface, std::uint32_t newest) const;
    static void added(
        void* data, wl_registry* registry, std::uint32_t name, const char* interface,
        std::uint32_t version);
    static void removed(void* data, wl_registry* registry, std::uint32_t name);

    wl_registry* m_registry;
    /// Compositors count their names upwards.
    std::map<Name, Global> m_globals;
    Changes m_changes;
};

} // namespace tessly
