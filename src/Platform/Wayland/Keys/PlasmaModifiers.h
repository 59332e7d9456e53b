#pragma once

#include "WaylandRegistry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <vector>

struct org_kde_kwin_keystate;

namespace tessly {

/// Which modifiers are held down, on all keyboards together, as a compositor with
/// org_kde_kwin_keystate tells programs that it trusts. Loop thread, or before the loop is started.
///
/// KWin 6 does not let one keyboard release what another one holds: what the user holds down is
/// part of every chord there.
class PlasmaModifiers
{
public:
    /// Null if the compositor does not tell of modifiers, as before the fifth version.
    [[nodiscard]] static std::unique_ptr<PlasmaModifiers> find(const WaylandRegistry& registry);

    ~PlasmaModifiers();
    PlasmaModifiers(const PlasmaModifiers&) = delete;
    PlasmaModifiers& operator=(const PlasmaModifiers&) = delete;

    /// Whether none is held down, as far as has been heard.
    [[nodiscard]] bool areUp() const { return m_held.empty(); }
    /// `up` is called once none is held down, which may be at once; or dropped with this.
    void whenUp(std::function<void()> up);

private:
    explicit PlasmaModifiers(org_kde_kwin_keystate* object);

    static void
    changed(void* data, org_kde_kwin_keystate* object, std::uint32_t key, std::uint32_t state);

    org_kde_kwin_keystate* m_object;
    /// As the protocol numbers them.
    std::set<std::uint32_t> m_held;
    std::vector<std::function<void()>> m_waiting;
};

} // namespace tessly
