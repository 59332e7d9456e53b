#pragma once

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

#include <cstdint>
#include <string>

struct zwlr_virtual_pointer_manager_v1;
struct zwlr_virtual_pointer_v1;

namespace tessly::test {

/// A mouse with a user at it, on a compositor that has zwlr_virtual_pointer_manager_v1.
class WaylandMouse
{
public:
    /// `display` is the path of the compositor's socket. Throws WaylandError.
    explicit WaylandMouse(const std::string& display);
    ~WaylandMouse();
    WaylandMouse(const WaylandMouse&) = delete;
    WaylandMouse& operator=(const WaylandMouse&) = delete;

    // Each returns once the compositor has it.
    /// In parts of a thousand of all that there is to see.
    void move(std::uint32_t x, std::uint32_t y);
    /// Presses and releases the left button.
    void click();

private:
    void done();

    WaylandEventLoop m_loop;
    WaylandRegistry m_registry;
    zwlr_virtual_pointer_manager_v1* m_manager = nullptr;
    zwlr_virtual_pointer_v1* m_pointer = nullptr;
};

} // namespace tessly::test
