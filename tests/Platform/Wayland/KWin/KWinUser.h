#pragma once

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <vector>

struct org_kde_kwin_fake_input;
struct org_kde_plasma_window_management;

namespace tessly::test {

/// Somebody with a keyboard and a task bar on KWin.
class KWinUser
{
public:
    /// `display` is the path of the compositor's socket. Throws WaylandError.
    explicit KWinUser(const std::string& display);
    ~KWinUser();
    KWinUser(const KWinUser&) = delete;
    KWinUser& operator=(const KWinUser&) = delete;

    // Each returns once the compositor has it.
    void bringToFront(const QByteArray& appID);
    void minimize(const QByteArray& appID);
    void moveToNewVirtualDesktop(const QByteArray& appID);
    // Keys as in linux/input-event-codes.h.
    void press(std::uint32_t key) { move(key, true); }
    void release(std::uint32_t key) { move(key, false); }
    void type(std::uint32_t key);
    /// Whether KWin tells of modifiers that are held down: as from KWin 6 on, which does not let
    /// one keyboard release what another one holds.
    [[nodiscard]] bool isToldOfModifiers() const;

private:
    class Window;

    /// The first of this application.
    Window& window(const QByteArray& appID);
    void setState(const QByteArray& appID, std::uint32_t state);
    void move(std::uint32_t key, bool isPress);
    void settle();

    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandRegistry> m_registry;
    org_kde_kwin_fake_input* m_input = nullptr;
    org_kde_plasma_window_management* m_management = nullptr;
    std::vector<std::unique_ptr<Window>> m_windows;
};

} // namespace tessly::test
