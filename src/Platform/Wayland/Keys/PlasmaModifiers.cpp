#include "PlasmaModifiers.h"

#include "keystate-client-protocol.h"

#include <utility>

namespace tessly {

namespace {

/// The first that tells of more than locks.
constexpr std::uint32_t version = 5;

} // namespace

std::unique_ptr<PlasmaModifiers> PlasmaModifiers::find(const WaylandRegistry& registry)
{
    auto* const object = registry.bind<org_kde_kwin_keystate>(
        registry.find(org_kde_kwin_keystate_interface.name), org_kde_kwin_keystate_interface,
        version);
    if (object == nullptr) {
        return nullptr;
    }
    std::unique_ptr<PlasmaModifiers> modifiers(new PlasmaModifiers(object));
    return org_kde_kwin_keystate_get_version(object) < version ? nullptr : std::move(modifiers);
}

PlasmaModifiers::PlasmaModifiers(org_kde_kwin_keystate* object)
    : m_object(object)
{
    static constexpr org_kde_kwin_keystate_listener listener = {
        .stateChanged = &PlasmaModifiers::changed};
    org_kde_kwin_keystate_add_listener(object, &listener, this);
    org_kde_kwin_keystate_fetchStates(object);
}

PlasmaModifiers::~PlasmaModifiers()
{
    if (org_kde_kwin_keystate_get_version(m_object) >=
        ORG_KDE_KWIN_KEYSTATE_DESTROY_SINCE_VERSION) {
        org_kde_kwin_keystate_destroy(m_object);
    } else {
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(m_object));
    }
}

void PlasmaModifiers::whenUp(std::function<void()> up)
{
    if (m_held.empty()) {
        up();
    } else {
        m_waiting.push_back(std::move(up));
    }
}

void PlasmaModifiers::changed(
    void* data, org_kde_kwin_keystate*, std::uint32_t key, std::uint32_t state)
{
    auto& self = *static_cast<PlasmaModifiers*>(data);
    const bool isModifier =
        key >= ORG_KDE_KWIN_KEYSTATE_KEY_ALT && key <= ORG_KDE_KWIN_KEYSTATE_KEY_ALTGR;
    if (!isModifier) {
        return;
    }
    if (state == ORG_KDE_KWIN_KEYSTATE_STATE_PRESSED) {
        self.m_held.insert(key);
        return;
    }
    self.m_held.erase(key);
    if (self.m_held.empty()) {
        for (const auto& up : std::exchange(self.m_waiting, {})) {
            up();
        }
    }
}

} // namespace tessly
