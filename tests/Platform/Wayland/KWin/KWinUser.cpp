#include "KWinUser.h"

#include "fake-input-client-protocol.h"
#include "keystate-client-protocol.h"
#include "plasma-window-management-client-protocol.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <wayland-client.h>

namespace tessly::test {

namespace {

constexpr auto timeout = std::chrono::seconds(20);
constexpr std::uint32_t fakeInputVersion = 4;
/// The first that tells of windows by their UUID. Later KWins do not know them by their number.
constexpr std::uint32_t managementVersion = 13;
constexpr std::uint32_t firstKeystateWithModifiers = 5;

} // namespace

class KWinUser::Window
{
public:
    Window(org_kde_plasma_window_management* management, const char* uuid)
        : m_object(org_kde_plasma_window_management_get_window_by_uuid(management, uuid))
    {
        using Object = org_kde_plasma_window;
        static constexpr auto ignore = [](void*, Object*, auto...) {};
        static constexpr org_kde_plasma_window_listener listener = {
            .title_changed = ignore,
            .app_id_changed =
                [](void* data, Object*, const char* appID) {
                    static_cast<Window*>(data)->m_appID = appID;
                },
            .state_changed = ignore,
            .virtual_desktop_changed = ignore,
            .themed_icon_name_changed = ignore,
            .unmapped = [](void* data, Object*) { static_cast<Window*>(data)->m_isClosed = true; },
            .initial_state = ignore,
            .parent_window = ignore,
            .geometry = ignore,
            .icon_changed = ignore,
            .pid_changed = ignore,
            .virtual_desktop_entered = ignore,
            .virtual_desktop_left = ignore,
            .application_menu = ignore,
            .activity_entered = ignore,
            .activity_left = ignore,
            .resource_name_changed = ignore,
            .client_geometry = ignore};
        org_kde_plasma_window_add_listener(m_object, &listener, this);
    }
    ~Window() { org_kde_plasma_window_destroy(m_object); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    [[nodiscard]] org_kde_plasma_window* object() const { return m_object; }
    [[nodiscard]] bool isOf(const QByteArray& appID) const
    {
        return !m_isClosed && m_appID == appID;
    }

private:
    org_kde_plasma_window* m_object;
    QByteArray m_appID;
    bool m_isClosed = false;
};

KWinUser::KWinUser(const std::string& display)
    : m_loop(display)
    , m_registry(std::make_unique<WaylandRegistry>(m_loop))
{
    m_loop.roundTrip(timeout);
    m_input = m_registry->bind<org_kde_kwin_fake_input>(
        m_registry->find(org_kde_kwin_fake_input_interface.name), org_kde_kwin_fake_input_interface,
        fakeInputVersion);
    m_management = m_registry->bind<org_kde_plasma_window_management>(
        m_registry->find(org_kde_plasma_window_management_interface.name),
        org_kde_plasma_window_management_interface, managementVersion);
    if (m_input == nullptr || m_management == nullptr) {
        throw WaylandError("KWin does not trust the tests");
    }
    org_kde_kwin_fake_input_authenticate(m_input, "a user", "tests");
    using Object = org_kde_plasma_window_management;
    static constexpr auto ignore = [](void*, Object*, auto...) {};
    static constexpr org_kde_plasma_window_management_listener listener = {
        .show_desktop_changed = ignore,
        .window = ignore,
        .stacking_order_changed = ignore,
        .stacking_order_uuid_changed = ignore,
        .window_with_uuid =
            [](void* data, Object* management, std::uint32_t, const char* uuid) {
                static_cast<KWinUser*>(data)->m_windows.push_back(
                    std::make_unique<Window>(management, uuid));
            },
        .stacking_order_changed_2 = ignore};
    org_kde_plasma_window_management_add_listener(m_management, &listener, this);
    settle();
}

KWinUser::~KWinUser()
{
    m_windows.clear();
    org_kde_plasma_window_management_destroy(m_management);
    org_kde_kwin_fake_input_destroy(m_input);
}

KWinUser::Window& KWinUser::window(const QByteArray& appID)
{
    // New windows are told of first, and then what they are.
    settle();
    settle();
    const auto found = std::ranges::find_if(
        m_windows, [&appID](const auto& window) { return window->isOf(appID); });
    if (found == m_windows.end()) {
        throw std::runtime_error("there is no window of " + appID.toStdString());
    }
    return **found;
}

void KWinUser::bringToFront(const QByteArray& appID)
{
    setState(appID, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
}

void KWinUser::minimize(const QByteArray& appID)
{
    setState(appID, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED);
}

void KWinUser::setState(const QByteArray& appID, std::uint32_t state)
{
    org_kde_plasma_window_set_state(window(appID).object(), state, state);
    settle();
}

void KWinUser::moveToNewVirtualDesktop(const QByteArray& appID)
{
    org_kde_plasma_window_request_enter_new_virtual_desktop(window(appID).object());
    settle();
}

void KWinUser::type(std::uint32_t key)
{
    press(key);
    release(key);
}

bool KWinUser::isToldOfModifiers() const
{
    auto* const states = m_registry->bind<org_kde_kwin_keystate>(
        m_registry->find(org_kde_kwin_keystate_interface.name), org_kde_kwin_keystate_interface,
        firstKeystateWithModifiers);
    if (states == nullptr) {
        return false;
    }
    const std::uint32_t version = org_kde_kwin_keystate_get_version(states);
    // Earlier versions cannot be told that it is not needed any more.
    wl_proxy_destroy(reinterpret_cast<wl_proxy*>(states));
    return version >= firstKeystateWithModifiers;
}

void KWinUser::move(std::uint32_t key, bool isPress)
{
    org_kde_kwin_fake_input_keyboard_key(m_input, key, isPress ? 1 : 0);
    settle();
}

void KWinUser::settle()
{
    m_loop.roundTrip(timeout);
}

} // namespace tessly::test
