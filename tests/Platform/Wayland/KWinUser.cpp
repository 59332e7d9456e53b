#include "KWinUser.h"

#include "fake-input-client-protocol.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <wayland-client.h>

namespace tessly::test {

namespace {

constexpr auto patience = std::chrono::seconds(20);

} // namespace

KWinUser::KWinUser(const std::string& display)
    : m_loop(display)
    , m_registry(std::make_unique<WaylandRegistry>(m_loop))
{
    m_loop.roundTrip(patience);
    m_input = m_registry->bind<org_kde_kwin_fake_input>(
        m_registry->find(org_kde_kwin_fake_input_interface.name), org_kde_kwin_fake_input_interface,
        4);
    if (m_input == nullptr) {
        throw WaylandError("KWin trusts no test with keys");
    }
    org_kde_kwin_fake_input_authenticate(m_input, "a user", "tests");
    m_manager = WaylandToplevelManager::find(
        *m_registry,
        {.changed =
             [this](WaylandToplevelHandle& window) {
                 if (std::ranges::count(m_windows, &window) == 0) {
                     m_windows.push_back(&window);
                 }
             },
         .closed = [this](WaylandToplevelHandle& window) { std::erase(m_windows, &window); },
         .finished = [] {}});
    m_loop.roundTrip(patience);
}

KWinUser::~KWinUser()
{
    org_kde_kwin_fake_input_destroy(m_input);
}

void KWinUser::bringToFront(const QByteArray& appID)
{
    // New windows are told of first, and then what they are.
    m_loop.roundTrip(patience);
    m_loop.roundTrip(patience);
    const auto found = std::ranges::find_if(
        m_windows, [&appID](const auto* window) { return window->state().appID == appID; });
    if (found == m_windows.end()) {
        throw std::runtime_error("there is no window of " + appID.toStdString());
    }
    (*found)->activate(nullptr);
    m_loop.roundTrip(patience);
}

void KWinUser::type(std::uint32_t key)
{
    press(key);
    release(key);
}

void KWinUser::move(std::uint32_t key, bool isPress)
{
    org_kde_kwin_fake_input_keyboard_key(m_input, key, isPress ? 1 : 0);
    m_loop.roundTrip(patience);
}

} // namespace tessly::test
