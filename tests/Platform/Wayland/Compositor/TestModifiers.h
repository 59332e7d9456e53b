#pragma once

#include <cstdint>
#include <set>
#include <vector>

struct wl_display;
struct wl_resource;

namespace tessly::test {

/// The keys of all keyboards for a TestCompositor, as org_kde_kwin_keystate tells of them. On its
/// thread.
class TestModifiers
{
public:
    explicit TestModifiers(wl_display* display, std::uint32_t version = 5);

    /// `key` as the protocol numbers them.
    void hold(std::uint32_t key);
    void letGo(std::uint32_t key);

private:
    struct Requests;
    friend struct Requests;

    void tell(std::uint32_t key) const;

    std::uint32_t m_version;
    std::vector<wl_resource*> m_resources;
    std::set<std::uint32_t> m_held;
};

} // namespace tessly::test
