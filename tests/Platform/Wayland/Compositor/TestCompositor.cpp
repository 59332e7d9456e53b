#include "TestCompositor.h"

#include "ext-data-control-v1-server-protocol.h"
#include "wlr-data-control-unstable-v1-server-protocol.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <wayland-server.h>

namespace tessly::test {

namespace {

constexpr std::uint32_t seatVersion = 5;

template <typename Object>
Object& objectOf(wl_resource* resource)
{
    return *static_cast<Object*>(wl_resource_get_user_data(resource));
}

void destroy(wl_client*, wl_resource* resource)
{
    wl_resource_destroy(resource);
}

int listeningSocket(const std::string& path)
{
    const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (file < 0 || path.size() >= sizeof address.sun_path) {
        throw std::runtime_error("the compositor has no socket");
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    if (bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(file, 16) != 0) {
        throw std::runtime_error("the compositor cannot listen");
    }
    return file;
}

} // namespace

/// The requests of clients, on the compositor's thread.
struct TestCompositor::Requests
{
    static void bindSeat(wl_client* client, void* data, std::uint32_t version, std::uint32_t id)
    {
        static const struct wl_seat_interface requests = {
            .get_pointer = [](wl_client*, wl_resource*, std::uint32_t) {},
            .get_keyboard = &getKeyboard,
            .get_touch = [](wl_client*, wl_resource*, std::uint32_t) {},
            .release = &destroy};
        wl_resource* const seat =
            wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(seat, &requests, data, [](wl_resource* destroyed) {
            std::erase(objectOf<TestCompositor>(destroyed).m_seats, destroyed);
        });
        auto& compositor = objectOf<TestCompositor>(seat);
        compositor.m_seats.push_back(seat);
        wl_seat_send_capabilities(
            seat, compositor.m_keymap.isNull() ? 0 : WL_SEAT_CAPABILITY_KEYBOARD);
        noteBind(data, wl_seat_interface);
    }

    static void getKeyboard(wl_client* client, wl_resource* seat, std::uint32_t id)
    {
        static const struct wl_keyboard_interface requests = {.release = &destroy};
        auto& compositor = objectOf<TestCompositor>(seat);
        wl_resource* const keyboard =
            wl_resource_create(client, &wl_keyboard_interface, wl_resource_get_version(seat), id);
        wl_resource_set_implementation(
            keyboard, &requests, &compositor, [](wl_resource* destroyed) {
                std::erase(objectOf<TestCompositor>(destroyed).m_keyboards, destroyed);
            });
        compositor.m_keyboards.push_back(keyboard);
        compositor.sendKeymap(keyboard);
    }

    static void bindWlr(wl_client* client, void* data, std::uint32_t version, std::uint32_t id)
    {
        wl_resource* const manager = wl_resource_create(
            client, &zwlr_data_control_manager_v1_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(manager, nullptr, data, nullptr);
        noteBind(data, zwlr_data_control_manager_v1_interface);
    }

    static void bindExt(wl_client* client, void* data, std::uint32_t version, std::uint32_t id)
    {
        static const struct ext_data_control_manager_v1_interface requests = {
            .create_data_source = &createSource,
            .get_data_device = &getDevice,
            .destroy = &destroy};
        wl_resource* const manager = wl_resource_create(
            client, &ext_data_control_manager_v1_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(manager, &requests, data, nullptr);
        noteBind(data, ext_data_control_manager_v1_interface);
    }

    static void noteBind(void* data, const wl_interface& interface)
    {
        ++static_cast<TestCompositor*>(data)->m_binds[interface.name];
    }

    static void createSource(wl_client* client, wl_resource* manager, std::uint32_t id)
    {
        static const struct ext_data_control_source_v1_interface requests = {
            .offer = [](wl_client*, wl_resource* source,
                        const char* type) { objectOf<Source>(source).types.emplace_back(type); },
            .destroy = &destroy};
        wl_resource* const resource =
            wl_resource_create(client, &ext_data_control_source_v1_interface, 1, id);
        auto source = std::make_unique<Source>(
            Source{.compositor = &objectOf<TestCompositor>(manager), .resource = resource});
        wl_resource_set_implementation(
            resource, &requests, source.release(), [](wl_resource* destroyed) {
                const std::unique_ptr<Source> gone(&objectOf<Source>(destroyed));
                gone->compositor->sourceGone(gone.get());
            });
    }

    static void getDevice(wl_client* client, wl_resource* manager, std::uint32_t id, wl_resource*)
    {
        static const struct ext_data_control_device_v1_interface requests = {
            .set_selection = &setSelection,
            .destroy = &destroy,
            .set_primary_selection = &setPrimarySelection};
        auto& compositor = objectOf<TestCompositor>(manager);
        wl_resource* const device = wl_resource_create(
            client, &ext_data_control_device_v1_interface, wl_resource_get_version(manager), id);
        wl_resource_set_implementation(device, &requests, &compositor, [](wl_resource* destroyed) {
            std::erase(objectOf<TestCompositor>(destroyed).m_devices, destroyed);
        });
        compositor.m_devices.push_back(device);
        compositor.announce(device);
        compositor.announcePrimary(device);
    }

    static void setSelection(wl_client*, wl_resource* device, wl_resource* source)
    {
        if (use(device, source)) {
            objectOf<TestCompositor>(device).select(sourceOf(source));
        }
    }

    static void setPrimarySelection(wl_client*, wl_resource* device, wl_resource* source)
    {
        auto& compositor = objectOf<TestCompositor>(device);
        if (use(device, source) && compositor.m_hasPrimary) {
            compositor.selectPrimary(sourceOf(source));
        }
    }

    static Source* sourceOf(wl_resource* source)
    {
        return source != nullptr ? &objectOf<Source>(source) : nullptr;
    }

    /// A source can be used once.
    static bool use(wl_resource* device, wl_resource* resource)
    {
        Source* const source = sourceOf(resource);
        if (source != nullptr && std::exchange(source->isUsed, true)) {
            wl_resource_post_error(
                device, EXT_DATA_CONTROL_DEVICE_V1_ERROR_USED_SOURCE, "used source");
            return false;
        }
        return true;
    }

    static void receive(wl_client*, wl_resource* resource, const char* type, std::int32_t file)
    {
        const auto& offer = objectOf<Offer>(resource);
        ++offer.compositor->m_receives;
        if (offer.source != nullptr) {
            ext_data_control_source_v1_send_send(offer.source->resource, type, file);
        }
        close(file);
    }
};

TestCompositor::TestCompositor()
    : TestCompositor(Options())
{
}

TestCompositor::TestCompositor(const Options& options)
    : m_display(wl_display_create())
    , m_wakeFD(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (m_display == nullptr || m_wakeFD < 0 ||
        wl_display_add_socket_fd(m_display, listeningSocket(display())) != 0) {
        throw std::runtime_error("the compositor does not start");
    }
    m_wake = wl_event_loop_add_fd(
        wl_display_get_event_loop(m_display), m_wakeFD, WL_EVENT_READABLE,
        [](int file, std::uint32_t, void* data) {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto bytes = read(file, &count, sizeof count);
            auto& self = *static_cast<TestCompositor*>(data);
            std::vector<std::function<void()>> jobs;
            {
                const std::scoped_lock lock(self.m_mutex);
                jobs.swap(self.m_jobs);
            }
            for (const auto& job : jobs) {
                job();
            }
            return 0;
        },
        this);
    addGlobals(options);
    m_thread = std::thread([this] { wl_display_run(m_display); });
}

TestCompositor::~TestCompositor()
{
    end();
    close(m_wakeFD);
}

std::string TestCompositor::display() const
{
    return m_folder.filePath(QStringLiteral("socket")).toStdString();
}

void TestCompositor::addGlobals(const Options& options)
{
    m_hasPrimary = options.hasPrimary;
    if (options.hasSeat) {
        m_seat =
            wl_global_create(m_display, &wl_seat_interface, seatVersion, this, &Requests::bindSeat);
    }
    if (options.hasWlr) {
        wl_global_create(
            m_display, &zwlr_data_control_manager_v1_interface, 2, this, &Requests::bindWlr);
    }
    if (options.hasExt) {
        wl_global_create(
            m_display, &ext_data_control_manager_v1_interface, 1, this, &Requests::bindExt);
    }
}

void TestCompositor::run(std::function<void()> job)
{
    std::promise<void> done;
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.emplace_back([&] {
            job();
            done.set_value();
        });
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(m_wakeFD, &one, sizeof one);
    done.get_future().wait();
}

void TestCompositor::end()
{
    if (m_thread.joinable()) {
        if (m_thaw) {
            m_endsFrozen = true;
            thaw();
        } else {
            run([this] { wl_display_terminate(m_display); });
        }
        m_thread.join();
        wl_event_source_remove(m_wake);
        wl_display_destroy_clients(m_display);
        wl_display_destroy(m_display);
    }
}

void TestCompositor::freeze(std::function<void()> first)
{
    auto thawed = std::make_shared<std::future<void>>(m_thaw.emplace().get_future());
    std::promise<void> frozen;
    {
        const std::scoped_lock lock(m_mutex);
        m_jobs.emplace_back([this, thawed, &frozen, first = std::move(first)] {
            frozen.set_value();
            thawed->wait();
            if (first) {
                first();
            }
            if (m_endsFrozen) {
                // Here, since what a client asks may be what the loop is to look at next.
                wl_display_destroy_clients(m_display);
                wl_display_terminate(m_display);
            }
        });
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(m_wakeFD, &one, sizeof one);
    frozen.get_future().wait();
}

void TestCompositor::thaw()
{
    if (auto thaw = std::exchange(m_thaw, std::nullopt)) {
        thaw->set_value();
    }
}

void TestCompositor::addSeat()
{
    run([this] {
        m_seat =
            wl_global_create(m_display, &wl_seat_interface, seatVersion, this, &Requests::bindSeat);
    });
}

void TestCompositor::removeSeat()
{
    // As compositors do it: who has heard of it may still be about to bind it. It goes with the
    // display.
    run([this] { wl_global_remove(std::exchange(m_seat, nullptr)); });
}

void TestCompositor::finishDevices()
{
    run([this] {
        for (wl_resource* const device : std::exchange(m_devices, {})) {
            ext_data_control_device_v1_send_finished(device);
        }
    });
}

void TestCompositor::setKeymap(const QByteArray& text)
{
    setKeymap(text, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, static_cast<std::uint32_t>(text.size()) + 1);
}

void TestCompositor::setKeymap(const QByteArray& text, std::uint32_t format, std::uint32_t size)
{
    run([&] {
        m_keymap = text;
        m_keymapFormat = format;
        m_keymapSize = size;
        for (wl_resource* const seat : m_seats) {
            wl_seat_send_capabilities(seat, WL_SEAT_CAPABILITY_KEYBOARD);
        }
        for (wl_resource* const keyboard : m_keyboards) {
            sendKeymap(keyboard);
        }
    });
}

void TestCompositor::sendKeymap(wl_resource* keyboard) const
{
    const int file = memfd_create("keymap", MFD_CLOEXEC);
    const auto size = static_cast<std::size_t>(m_keymap.size()) + 1;
    if (file < 0 || write(file, m_keymap.constData(), size) != static_cast<ssize_t>(size)) {
        throw std::runtime_error("a key map has no room");
    }
    wl_keyboard_send_keymap(keyboard, m_keymapFormat, file, m_keymapSize);
    close(file);
}

int TestCompositor::binds(const std::string& interface)
{
    int count = 0;
    run([&] { count = m_binds[interface]; });
    return count;
}

void TestCompositor::select(Source* source)
{
    if (source == m_selection) {
        return;
    }
    if (Source* const old = std::exchange(m_selection, source)) {
        forget(old);
        ext_data_control_source_v1_send_cancelled(old->resource);
    }
    for (wl_resource* const device : m_devices) {
        announce(device);
    }
}

void TestCompositor::selectPrimary(Source* source)
{
    if (Source* const old = std::exchange(m_primary, source)) {
        forget(old);
        ext_data_control_source_v1_send_cancelled(old->resource);
    }
    for (wl_resource* const device : m_devices) {
        announcePrimary(device);
    }
}

void TestCompositor::sourceGone(Source* source)
{
    forget(source);
    if (source == m_primary) {
        m_primary = nullptr;
        selectPrimary(nullptr);
    }
    if (source == m_selection) {
        m_selection = nullptr;
        for (wl_resource* const device : m_devices) {
            announce(device);
        }
    }
}

void TestCompositor::forget(const Source* source)
{
    for (Offer* const offer : m_offers) {
        if (offer->source == source) {
            offer->source = nullptr;
        }
    }
}

void TestCompositor::announce(wl_resource* device)
{
    wl_resource* const offer = m_selection != nullptr ? introduce(device, m_selection) : nullptr;
    ext_data_control_device_v1_send_selection(device, offer);
}

void TestCompositor::announcePrimary(wl_resource* device)
{
    if (m_hasPrimary) {
        wl_resource* const offer = m_primary != nullptr ? introduce(device, m_primary) : nullptr;
        ext_data_control_device_v1_send_primary_selection(device, offer);
    }
}

wl_resource* TestCompositor::introduce(wl_resource* device, Source* source)
{
    static const struct ext_data_control_offer_v1_interface requests = {
        .receive = &Requests::receive, .destroy = &destroy};
    wl_resource* const resource = wl_resource_create(
        wl_resource_get_client(device), &ext_data_control_offer_v1_interface, 1, 0);
    auto offer = std::make_unique<Offer>(Offer{.compositor = this, .source = source});
    m_offers.push_back(offer.get());
    wl_resource_set_implementation(
        resource, &requests, offer.release(), [](wl_resource* destroyed) {
            const std::unique_ptr<Offer> gone(&objectOf<Offer>(destroyed));
            std::erase(gone->compositor->m_offers, gone.get());
        });
    ext_data_control_device_v1_send_data_offer(device, resource);
    for (const std::string& type : source->types) {
        ext_data_control_offer_v1_send_offer(resource, type.c_str());
    }
    return resource;
}

} // namespace tessly::test
