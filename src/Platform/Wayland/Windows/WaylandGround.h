#pragma once

#include "WaylandEventLoop.h"
#include "WaylandRegistry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct wl_surface;

namespace tessly {

/// What the panel stands on where it is a layer surface: transparent surfaces over all outputs, in
/// front of everything that is there when they are laid. They tell where the pointer is, and get
/// the presses beside the panel, of which nobody else hears then. Loop thread.
class WaylandGround
{
public:
    struct Pointer
    {
        /// As the compositor names it.
        std::string output = {};
        /// From the output's upper left corner, in logical pixels.
        double x = 0;
        double y = 0;
    };
    /// None if there is no pointer, or it is not known where it is.
    using Laid = std::function<void(std::optional<Pointer> pointer)>;

    /// For all of them to be laid: those that are not by then are taken away again, since they
    /// would come to lie over the panel.
    static constexpr WaylandEventLoop::Milliseconds deadline{200};
    /// For the compositor to tell where the pointer is once they are.
    static constexpr WaylandEventLoop::Milliseconds pointerDelay{30};

    /// Both must outlive it. Takes nothing of the compositor's before it is laid.
    WaylandGround(WaylandEventLoop& loop, const WaylandRegistry& registry);
    ~WaylandGround();
    WaylandGround(const WaylandGround&) = delete;
    WaylandGround& operator=(const WaylandGround&) = delete;

    /// Lays it, again if it is there. Whatever is shown after `laid` is in front of it. `pressed`
    /// is called at each press of a button on it.
    void lay(Laid laid, std::function<void()> pressed);
    void lift();

private:
    /// The part of it over one output.
    class Part;
    struct Objects;

    void makeObjects();
    void layParts();
    void partLaid();
    void waitForPointer();
    void pointerFound(wl_surface* surface, double x, double y);
    void answer();
    [[nodiscard]] Part* part(wl_surface* surface) const;
    void listenToPointer();

    WaylandEventLoop& m_loop;
    const WaylandRegistry& m_registry;
    /// From the first laying on.
    std::unique_ptr<Objects> m_objects;
    std::vector<std::unique_ptr<Part>> m_parts;
    Laid m_laid;
    std::function<void()> m_pressed;
    std::optional<WaylandEventLoop::TimerID> m_timer;
    std::optional<Pointer> m_pointer;
    /// Counts the layings, to tell late answers.
    std::uint64_t m_laying = 0;
};

} // namespace tessly
