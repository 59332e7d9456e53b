#include "WaylandGround.h"

#include "viewporter-client-protocol.h"
#include "wlr-layer-shell-unstable-v1-client-protocol.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace tessly {

namespace {

/// The seat's and the pointer's events are the same up to this one.
constexpr std::uint32_t seatVersion = 4;
/// The first that tells an output's name.
constexpr std::uint32_t outputVersion = 4;
constexpr std::uint32_t layerShellVersion = 4;

/// For a press to have it lifted. A program that does nothing about it keeps nobody from their
/// windows.
constexpr WaylandEventLoop::Milliseconds pressTimeout{1000};

template <auto destroy>
struct Deleter
{
    template <typename Object>
    void operator()(Object* object) const
    {
        destroy(object);
    }
};

template <typename Object, auto destroy>
using Owned = std::unique_ptr<Object, Deleter<destroy>>;

void destroyLayerShell(zwlr_layer_shell_v1* shell)
{
    if (zwlr_layer_shell_v1_get_version(shell) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
        zwlr_layer_shell_v1_destroy(shell);
    } else {
        wl_proxy_destroy(reinterpret_cast<wl_proxy*>(shell));
    }
}

/// One transparent pixel.
wl_buffer* makePixel(wl_shm* shm)
{
    constexpr std::int32_t size = 4;
    const int file = memfd_create("pixel", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, size) != 0) {
        close(file);
        return nullptr;
    }
    wl_shm_pool* const pool = wl_shm_create_pool(shm, file, size);
    close(file);
    wl_buffer* const pixel = wl_shm_pool_create_buffer(pool, 0, 1, 1, size, WL_SHM_FORMAT_ARGB8888);
    wl_shm_pool_destroy(pool);
    return pixel;
}

} // namespace

struct WaylandGround::Objects
{
    Owned<wl_compositor, wl_compositor_destroy> compositor;
    Owned<zwlr_layer_shell_v1, destroyLayerShell> layerShell;
    Owned<wp_viewporter, wp_viewporter_destroy> viewporter;
    Owned<wl_shm, wl_shm_destroy> shm;
    Owned<wl_buffer, wl_buffer_destroy> pixel;
    Owned<wl_seat, wl_seat_destroy> seat;
    Owned<wl_pointer, wl_pointer_release> pointer;
    bool hasPointer = false;

    [[nodiscard]] bool areComplete() const
    {
        return compositor && layerShell && viewporter && pixel;
    }
};

class WaylandGround::Part
{
public:
    /// Over an output, which it takes over; or, with none, the one that is laid last: a pixel that
    /// the pointer goes through. For sway looks for what is under the pointer right before a
    /// surface is there, and finds the others when this one comes.
    Part(WaylandGround& ground, wl_output* output)
        : m_ground(ground)
        , m_output(output)
        , m_surface(wl_compositor_create_surface(ground.m_objects->compositor.get()))
        , m_viewport(
              wp_viewporter_get_viewport(ground.m_objects->viewporter.get(), m_surface.get()))
        , m_layer(zwlr_layer_shell_v1_get_layer_surface(
              ground.m_objects->layerShell.get(), m_surface.get(), output,
              ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "tessly-ground"))
    {
        static constexpr wl_output_listener outputListener = {
            .geometry = [](void*, wl_output*, std::int32_t, std::int32_t, std::int32_t,
                           std::int32_t, std::int32_t, const char*, const char*, std::int32_t) {},
            .mode = [](void*, wl_output*, std::uint32_t, std::int32_t, std::int32_t,
                       std::int32_t) {},
            .done = [](void*, wl_output*) {},
            .scale = [](void*, wl_output*, std::int32_t) {},
            .name = [](void* data, wl_output*,
                       const char* name) { static_cast<Part*>(data)->m_name = name; },
            .description = [](void*, wl_output*, const char*) {}};
        if (output != nullptr) {
            wl_output_add_listener(output, &outputListener, this);
        }
        static constexpr zwlr_layer_surface_v1_listener layerListener = {
            .configure =
                [](void* data, zwlr_layer_surface_v1*, std::uint32_t serial, std::uint32_t width,
                   std::uint32_t height) {
                    static_cast<Part*>(data)->configure(serial, width, height);
                },
            // With its output, and is seen no more.
            .closed = [](void*, zwlr_layer_surface_v1*) {}};
        zwlr_layer_surface_v1_add_listener(m_layer.get(), &layerListener, this);
        if (output != nullptr) {
            zwlr_layer_surface_v1_set_anchor(
                m_layer.get(),
                ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                    ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT);
        } else {
            zwlr_layer_surface_v1_set_size(m_layer.get(), 1, 1);
            wl_region* const nothing =
                wl_compositor_create_region(ground.m_objects->compositor.get());
            wl_surface_set_input_region(m_surface.get(), nothing);
            wl_region_destroy(nothing);
        }
        // Over panels and docks, too.
        zwlr_layer_surface_v1_set_exclusive_zone(m_layer.get(), -1);
        wl_surface_commit(m_surface.get());
    }
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    ~Part() = default;

    [[nodiscard]] bool isLast() const { return !m_output; }
    [[nodiscard]] bool isLaid() const { return m_isLaid; }
    [[nodiscard]] wl_surface* surface() const { return m_surface.get(); }
    [[nodiscard]] const std::string& name() const { return m_name; }

private:
    void configure(std::uint32_t serial, std::uint32_t width, std::uint32_t height)
    {
        zwlr_layer_surface_v1_ack_configure(m_layer.get(), serial);
        const bool isNews = std::exchange(m_width, width) != width;
        if (std::exchange(m_height, height) == height && !isNews && m_isLaid) {
            return;
        }
        wp_viewport_set_destination(
            m_viewport.get(), static_cast<std::int32_t>(std::max(width, 1U)),
            static_cast<std::int32_t>(std::max(height, 1U)));
        wl_surface_attach(m_surface.get(), m_ground.m_objects->pixel.get(), 0, 0);
        wl_surface_damage(m_surface.get(), 0, 0, 1, 1);
        wl_surface_commit(m_surface.get());
        if (!std::exchange(m_isLaid, true)) {
            m_ground.partLaid();
        }
    }

    WaylandGround& m_ground;
    Owned<wl_output, wl_output_release> m_output;
    Owned<wl_surface, wl_surface_destroy> m_surface;
    Owned<wp_viewport, wp_viewport_destroy> m_viewport;
    Owned<zwlr_layer_surface_v1, zwlr_layer_surface_v1_destroy> m_layer;
    std::string m_name;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    bool m_isLaid = false;
};

WaylandGround::WaylandGround(WaylandEventLoop& loop, const WaylandRegistry& registry)
    : m_loop(loop)
    , m_registry(registry)
{
}

WaylandGround::~WaylandGround() = default;

void WaylandGround::makeObjects()
{
    m_objects = std::make_unique<Objects>();
    const auto bind =
        [this]<typename Owner>(Owner& owner, const wl_interface& interface, std::uint32_t newest) {
            owner.reset(m_registry.bind<typename Owner::element_type>(
                m_registry.find(interface.name), interface, newest));
        };
    bind(m_objects->layerShell, zwlr_layer_shell_v1_interface, layerShellVersion);
    bind(m_objects->compositor, wl_compositor_interface, 1);
    bind(m_objects->viewporter, wp_viewporter_interface, 1);
    bind(m_objects->shm, wl_shm_interface, 1);
    if (m_objects->shm) {
        m_objects->pixel.reset(makePixel(m_objects->shm.get()));
    }
    bind(m_objects->seat, wl_seat_interface, seatVersion);
    if (m_objects->seat) {
        static constexpr wl_seat_listener listener = {
            .capabilities =
                [](void* data, wl_seat*, std::uint32_t capabilities) {
                    static_cast<Objects*>(data)->hasPointer =
                        (capabilities & WL_SEAT_CAPABILITY_POINTER) != 0;
                },
            .name = [](void*, wl_seat*, const char*) {}};
        wl_seat_add_listener(m_objects->seat.get(), &listener, m_objects.get());
    }
}

void WaylandGround::lay(Laid laid, std::function<void()> pressed)
{
    lift();
    m_laid = std::move(laid);
    m_pressed = std::move(pressed);
    m_timer = m_loop.callAfter(deadline, [this] {
        m_timer.reset();
        lift();
    });
    if (!m_objects) {
        makeObjects();
    }
    // What the seat has is known then.
    m_loop.awaitRoundTrip([this, laying = m_laying] {
        if (laying == m_laying) {
            layParts();
        }
    });
}

void WaylandGround::layParts()
{
    if (!m_objects->areComplete()) {
        lift();
        return;
    }
    if (m_objects->hasPointer &&
        wl_seat_get_version(m_objects->seat.get()) >= WL_POINTER_RELEASE_SINCE_VERSION) {
        m_objects->pointer.reset(wl_seat_get_pointer(m_objects->seat.get()));
        listenToPointer();
    }
    for (const auto name : m_registry.findAll(wl_output_interface.name)) {
        auto* const output = m_registry.bind<wl_output>(name, wl_output_interface, outputVersion);
        if (wl_output_get_version(output) >= outputVersion) {
            m_parts.push_back(std::make_unique<Part>(*this, output));
        } else {
            wl_output_destroy(output);
        }
    }
    if (m_parts.empty()) {
        lift();
    }
}

void WaylandGround::lift()
{
    ++m_laying;
    if (m_timer) {
        m_loop.cancel(*std::exchange(m_timer, std::nullopt));
    }
    m_parts.clear();
    if (m_objects) {
        m_objects->pointer.reset();
    }
    m_pressed = nullptr;
    m_pointer.reset();
    answer();
}

void WaylandGround::partLaid()
{
    if (!m_laid || !std::ranges::all_of(m_parts, &Part::isLaid)) {
        return;
    }
    if (!m_parts.back()->isLast()) {
        m_parts.push_back(std::make_unique<Part>(*this, nullptr));
        return;
    }
    // The compositor shows them when it gets to that, and tells of the pointer then.
    m_loop.awaitRoundTrip([this, laying = m_laying] {
        if (laying == m_laying) {
            waitForPointer();
        }
    });
}

void WaylandGround::waitForPointer()
{
    if (m_timer) {
        m_loop.cancel(*std::exchange(m_timer, std::nullopt));
    }
    if (m_pointer || !m_objects->pointer) {
        answer();
        return;
    }
    m_timer = m_loop.callAfter(pointerDelay, [this] {
        m_timer.reset();
        answer();
    });
}

void WaylandGround::pointerFound(wl_surface* surface, double x, double y)
{
    const Part* const found = part(surface);
    if (found == nullptr || !m_laid) {
        return;
    }
    m_pointer = Pointer{.output = found->name(), .x = x, .y = y};
    if (m_parts.back()->isLast() && m_parts.back()->isLaid()) {
        waitForPointer();
    }
}

void WaylandGround::answer()
{
    if (const auto laid = std::exchange(m_laid, nullptr)) {
        laid(m_pointer);
    }
}

WaylandGround::Part* WaylandGround::part(wl_surface* surface) const
{
    const auto found =
        std::ranges::find(m_parts, surface, [](const auto& part) { return part->surface(); });
    return found != m_parts.end() ? found->get() : nullptr;
}

void WaylandGround::listenToPointer()
{
    // The others are those of later versions.
    static const wl_pointer_listener listener = [] {
        wl_pointer_listener listener = {};
        listener.enter = [](void* data, wl_pointer*, std::uint32_t, wl_surface* surface,
                            wl_fixed_t x, wl_fixed_t y) {
            static_cast<WaylandGround*>(data)->pointerFound(
                surface, wl_fixed_to_double(x), wl_fixed_to_double(y));
        };
        listener.leave = [](void*, wl_pointer*, std::uint32_t, wl_surface*) {};
        listener.motion = [](void*, wl_pointer*, std::uint32_t, wl_fixed_t, wl_fixed_t) {};
        listener.button = [](void* data, wl_pointer*, std::uint32_t, std::uint32_t, std::uint32_t,
                             std::uint32_t state) {
            auto& self = *static_cast<WaylandGround*>(data);
            if (state != WL_POINTER_BUTTON_STATE_PRESSED || !self.m_pressed) {
                return;
            }
            self.m_pressed();
            if (!self.m_timer) {
                self.m_timer = self.m_loop.callAfter(pressTimeout, [&self] {
                    self.m_timer.reset();
                    self.lift();
                });
            }
        };
        listener.axis = [](void*, wl_pointer*, std::uint32_t, std::uint32_t, wl_fixed_t) {};
        return listener;
    }();
    wl_pointer_add_listener(m_objects->pointer.get(), &listener, this);
}

} // namespace tessly
