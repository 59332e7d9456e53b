#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

struct wl_client;
struct wl_display;
struct wl_event_source;
struct wl_global;
struct wl_resource;

namespace tessly::test {

/// A compositor of a test's own, on a thread and a socket of its own: seats and
/// ext_data_control_manager_v1, and nothing to see. It does what is told of it and notes what it is
/// asked for.
class TestCompositor
{
public:
    struct Options
    {
        bool hasExt = true;
        /// Shows zwlr_data_control_manager_v1, which does nothing here.
        bool hasWlr = false;
        bool hasSeat = true;
        bool hasPrimary = true;
    };

    /// Throws std::runtime_error.
    TestCompositor();
    explicit TestCompositor(const Options& options);
    ~TestCompositor();
    TestCompositor(const TestCompositor&) = delete;
    TestCompositor& operator=(const TestCompositor&) = delete;

    /// The path of its socket.
    [[nodiscard]] std::string display() const;

    /// Ends it, as a crash would; if it is frozen, without a look at what was asked meanwhile.
    void end();
    /// It does nothing at all until `thaw`, and then, before it looks at what programs have asked
    /// for meanwhile, this.
    void freeze(std::function<void()> first = {});
    void thaw();

    void addSeat();
    void removeSeat();
    /// Tells every program that its data device is finished.
    void finishDevices();

    /// The seat has a keyboard with this key map from now on.
    void setKeymap(const QByteArray& text);
    /// The same, told by a message that names another format, or another size than the file has.
    void setKeymap(const QByteArray& text, std::uint32_t format, std::uint32_t size);

    /// Runs a job on the compositor's thread, and waits for its end. Not while it is frozen.
    void run(std::function<void()> job);
    /// On the compositor's thread.
    [[nodiscard]] wl_display* wlDisplay() const { return m_display; }
    /// Gives it something more, which lives as long as it does; made on its thread.
    template <typename Extension>
    Extension& add()
    {
        std::shared_ptr<Extension> extension;
        run([&] { extension = std::make_shared<Extension>(wlDisplay()); });
        m_extensions.push_back(extension);
        return *extension;
    }

    /// How often content was asked for.
    [[nodiscard]] int receives() const { return m_receives; }
    /// How often an interface was bound.
    [[nodiscard]] int binds(const std::string& interface);

private:
    struct Source
    {
        TestCompositor* compositor;
        wl_resource* resource;
        std::vector<std::string> types = {};
        bool isUsed = false;
    };
    struct Offer
    {
        TestCompositor* compositor;
        Source* source;
    };
    struct Requests;
    friend struct Requests;

    void addGlobals(const Options& options);
    void select(Source* source);
    void selectPrimary(Source* source);
    void sourceGone(Source* source);
    void forget(const Source* source);
    void announce(wl_resource* device);
    void announcePrimary(wl_resource* device);
    [[nodiscard]] wl_resource* introduce(wl_resource* device, Source* source);
    void sendKeymap(wl_resource* keyboard) const;

    /// The compositor is gone before they are.
    std::vector<std::shared_ptr<void>> m_extensions;
    QTemporaryDir m_folder;
    wl_display* m_display = nullptr;
    int m_wakeFD = -1;
    wl_event_source* m_wake = nullptr;
    wl_global* m_seat = nullptr;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_jobs;
    std::map<std::string, int> m_binds;
    std::vector<wl_resource*> m_seats;
    std::vector<wl_resource*> m_keyboards;
    QByteArray m_keymap;
    std::uint32_t m_keymapFormat = 0;
    std::uint32_t m_keymapSize = 0;
    std::vector<wl_resource*> m_devices;
    std::vector<Offer*> m_offers;
    Source* m_selection = nullptr;
    Source* m_primary = nullptr;
    bool m_hasPrimary = true;
    std::atomic<int> m_receives = 0;
    std::optional<std::promise<void>> m_thaw;
    std::atomic<bool> m_endsFrozen = false;
    std::thread m_thread;
};

} // namespace tessly::test
