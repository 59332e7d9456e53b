#include "WaylandDataControl.h"

#include "ext-data-control-v1-client-protocol.h"
#include "wlr-data-control-unstable-v1-client-protocol.h"

#include <algorithm>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tessly {

namespace {

// The two protocols, each under the same names.

struct Ext
{
    using Manager = ext_data_control_manager_v1;
    using Device = ext_data_control_device_v1;
    using Source = ext_data_control_source_v1;
    using Offer = ext_data_control_offer_v1;
    using DeviceListener = ext_data_control_device_v1_listener;
    using SourceListener = ext_data_control_source_v1_listener;
    using OfferListener = ext_data_control_offer_v1_listener;

    static constexpr const wl_interface& managerInterface = ext_data_control_manager_v1_interface;
    static constexpr std::uint32_t newestVersion = 1;

    static constexpr auto createSource = &ext_data_control_manager_v1_create_data_source;
    static constexpr auto getDevice = &ext_data_control_manager_v1_get_data_device;
    static constexpr auto destroyManager = &ext_data_control_manager_v1_destroy;
    static constexpr auto listenToDevice = &ext_data_control_device_v1_add_listener;
    static constexpr auto setSelection = &ext_data_control_device_v1_set_selection;
    static constexpr auto setPrimarySelection = &ext_data_control_device_v1_set_primary_selection;
    static constexpr auto deviceVersion = &ext_data_control_device_v1_get_version;
    static constexpr std::uint32_t primarySince =
        EXT_DATA_CONTROL_DEVICE_V1_SET_PRIMARY_SELECTION_SINCE_VERSION;
    static constexpr auto destroyDevice = &ext_data_control_device_v1_destroy;
    static constexpr auto listenToSource = &ext_data_control_source_v1_add_listener;
    static constexpr auto offer = &ext_data_control_source_v1_offer;
    static constexpr auto destroySource = &ext_data_control_source_v1_destroy;
    static constexpr auto listenToOffer = &ext_data_control_offer_v1_add_listener;
    static constexpr auto receive = &ext_data_control_offer_v1_receive;
    static constexpr auto destroyOffer = &ext_data_control_offer_v1_destroy;
};

struct Wlr
{
    using Manager = zwlr_data_control_manager_v1;
    using Device = zwlr_data_control_device_v1;
    using Source = zwlr_data_control_source_v1;
    using Offer = zwlr_data_control_offer_v1;
    using DeviceListener = zwlr_data_control_device_v1_listener;
    using SourceListener = zwlr_data_control_source_v1_listener;
    using OfferListener = zwlr_data_control_offer_v1_listener;

    static constexpr const wl_interface& managerInterface = zwlr_data_control_manager_v1_interface;
    static constexpr std::uint32_t newestVersion = 2;

    static constexpr auto createSource = &zwlr_data_control_manager_v1_create_data_source;
    static constexpr auto getDevice = &zwlr_data_control_manager_v1_get_data_device;
    static constexpr auto destroyManager = &zwlr_data_control_manager_v1_destroy;
    static constexpr auto listenToDevice = &zwlr_data_control_device_v1_add_listener;
    static constexpr auto setSelection = &zwlr_data_control_device_v1_set_selection;
    static constexpr auto setPrimarySelection = &zwlr_data_control_device_v1_set_primary_selection;
    static constexpr auto deviceVersion = &zwlr_data_control_device_v1_get_version;
    static constexpr std::uint32_t primarySince =
        ZWLR_DATA_CONTROL_DEVICE_V1_SET_PRIMARY_SELECTION_SINCE_VERSION;
    static constexpr auto destroyDevice = &zwlr_data_control_device_v1_destroy;
    static constexpr auto listenToSource = &zwlr_data_control_source_v1_add_listener;
    static constexpr auto offer = &zwlr_data_control_source_v1_offer;
    static constexpr auto destroySource = &zwlr_data_control_source_v1_destroy;
    static constexpr auto listenToOffer = &zwlr_data_control_offer_v1_add_listener;
    static constexpr auto receive = &zwlr_data_control_offer_v1_receive;
    static constexpr auto destroyOffer = &zwlr_data_control_offer_v1_destroy;
};

template <typename Protocol>
class Offer final : public WaylandDataOffer
{
public:
    explicit Offer(typename Protocol::Offer* object)
        : m_object(object)
    {
        static constexpr typename Protocol::OfferListener listener = {.offer = &Offer::offered};
        Protocol::listenToOffer(object, &listener, this);
    }
    ~Offer() override { Protocol::destroyOffer(m_object); }

    void receive(const QByteArray& type, int file) override
    {
        Protocol::receive(m_object, type.constData(), file);
    }

    [[nodiscard]] typename Protocol::Offer* object() const { return m_object; }

private:
    static void offered(void* data, typename Protocol::Offer*, const char* type)
    {
        static_cast<Offer*>(data)->addType(type);
    }

    typename Protocol::Offer* m_object;
};

template <typename Protocol>
class Source final : public WaylandDataSource
{
public:
    Source(typename Protocol::Source* object, const QByteArrayList& types, Events events)
        : m_object(object)
        , m_events(std::move(events))
    {
        static constexpr typename Protocol::SourceListener listener = {
            .send = &Source::send, .cancelled = &Source::cancelled};
        Protocol::listenToSource(object, &listener, this);
        for (const QByteArray& type : types) {
            Protocol::offer(object, type.constData());
        }
    }
    ~Source() override { Protocol::destroySource(m_object); }

    [[nodiscard]] typename Protocol::Source* object() const { return m_object; }

private:
    static void send(void* data, typename Protocol::Source*, const char* type, int file)
    {
        static_cast<Source*>(data)->m_events.send(type, file);
    }

    static void cancelled(void* data, typename Protocol::Source*)
    {
        // The source may be gone before the callback has come to its end.
        const auto callback = static_cast<Source*>(data)->m_events.cancelled;
        callback();
    }

    typename Protocol::Source* m_object;
    Events m_events;
};

template <typename Protocol>
class Device final : public WaylandDataDevice
{
public:
    Device(typename Protocol::Device* object, Events events)
        : m_object(object)
        , m_events(std::move(events))
    {
        static constexpr typename Protocol::DeviceListener listener = {
            .data_offer = &Device::introduced,
            .selection = &Device::selected,
            .finished = &Device::finished,
            .primary_selection = &Device::primarySelected};
        Protocol::listenToDevice(object, &listener, this);
    }
    ~Device() override { Protocol::destroyDevice(m_object); }

    void setSelection(WaylandDataSource* source) override
    {
        Protocol::setSelection(m_object, objectOf(source));
    }

    void setPrimarySelection(WaylandDataSource* source) override
    {
        if (Protocol::deviceVersion(m_object) >= Protocol::primarySince) {
            Protocol::setPrimarySelection(m_object, objectOf(source));
        }
    }

private:
    using OfferObject = typename Protocol::Offer;

    static typename Protocol::Source* objectOf(WaylandDataSource* source)
    {
        // A source is made by the same control as the device, so it speaks the same protocol.
        return source != nullptr ? static_cast<Source<Protocol>*>(source)->object() : nullptr;
    }

    static void introduced(void* data, typename Protocol::Device*, OfferObject* offer)
    {
        static_cast<Device*>(data)->m_introduced.push_back(
            std::make_unique<Offer<Protocol>>(offer));
    }

    static void selected(void* data, typename Protocol::Device*, OfferObject* offer)
    {
        auto& self = *static_cast<Device*>(data);
        self.m_events.selection(self.take(offer));
    }

    static void finished(void* data, typename Protocol::Device*)
    {
        static_cast<Device*>(data)->m_events.finished();
    }

    static void primarySelected(void* data, typename Protocol::Device*, OfferObject* offer)
    {
        auto& self = *static_cast<Device*>(data);
        auto taken = self.take(offer);
        if (self.m_events.primarySelection) {
            self.m_events.primarySelection(std::move(taken));
        }
    }

    std::unique_ptr<WaylandDataOffer> take(OfferObject* object)
    {
        const auto found = std::ranges::find_if(
            m_introduced, [object](const auto& offer) { return offer->object() == object; });
        if (found == m_introduced.end()) {
            return nullptr;
        }
        std::unique_ptr<WaylandDataOffer> offer = std::move(*found);
        m_introduced.erase(found);
        return offer;
    }

    typename Protocol::Device* m_object;
    Events m_events;
    /// Those of which it has not been said yet what they are the content of.
    std::vector<std::unique_ptr<Offer<Protocol>>> m_introduced;
};

template <typename Protocol>
class Control final : public WaylandDataControl
{
public:
    explicit Control(typename Protocol::Manager* object)
        : m_object(object)
    {
    }
    ~Control() override { Protocol::destroyManager(m_object); }

    [[nodiscard]] std::unique_ptr<WaylandDataDevice>
    device(wl_seat* seat, WaylandDataDevice::Events events) override
    {
        return std::make_unique<Device<Protocol>>(
            Protocol::getDevice(m_object, seat), std::move(events));
    }

    [[nodiscard]] std::unique_ptr<WaylandDataSource>
    source(const QByteArrayList& types, WaylandDataSource::Events events) override
    {
        return std::make_unique<Source<Protocol>>(
            Protocol::createSource(m_object), types, std::move(events));
    }

private:
    typename Protocol::Manager* m_object;
};

template <typename Protocol>
std::unique_ptr<WaylandDataControl> control(const WaylandRegistry& registry)
{
    auto* const object = registry.bind<typename Protocol::Manager>(
        registry.find(Protocol::managerInterface.name), Protocol::managerInterface,
        Protocol::newestVersion);
    return object != nullptr ? std::make_unique<Control<Protocol>>(object) : nullptr;
}

} // namespace

void WaylandDataOffer::addType(const char* type)
{
    // To tell only some of them could leave out the one that forbids the rest.
    m_hasTooManyTypes = m_hasTooManyTypes || m_types.size() >= maximumTypes;
    if (m_hasTooManyTypes) {
        m_types.clear();
    } else {
        m_types.append(type);
    }
}

std::unique_ptr<WaylandDataControl> WaylandDataControl::find(const WaylandRegistry& registry)
{
    auto found = control<Ext>(registry);
    return found ? std::move(found) : control<Wlr>(registry);
}

} // namespace tessly
