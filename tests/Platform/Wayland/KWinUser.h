#pragma once

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"
#include "WaylandToplevelManager.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct org_kde_kwin_fake_input;

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
    /// The first window of this application.
    void bringToFront(const QByteArray& appID);
    // Keys as in linux/input-event-codes.h.
    void press(std::uint32_t key) { move(key, true); }
    void release(std::uint32_t key) { move(key, false); }
    void type(std::uint32_t key);

private:
    void move(std::uint32_t key, bool isPress);

    WaylandEventLoop m_loop;
    std::unique_ptr<WaylandRegistry> m_registry;
    org_kde_kwin_fake_input* m_input = nullptr;
    std::vector<WaylandToplevelHandle*> m_windows;
    std::unique_ptr<WaylandToplevelManager> m_manager;
};

} // namespace tessly::test
