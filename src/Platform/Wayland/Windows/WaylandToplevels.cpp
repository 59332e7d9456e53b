#include "WaylandToplevels.h"

#include "WaylandSeat.h"
#include "Workspace.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// The class of the program's own windows on XWayland, in lower case.
constexpr auto ownClass = "tessly"_L1;

bool isOwnName(const QString& name)
{
    return name.compare(ownClass, Qt::CaseInsensitive) == 0 ||
           name.compare(ownBundleIdentifier, Qt::CaseInsensitive) == 0;
}

} // namespace

WaylandToplevels::WaylandToplevels(
    WaylandEventLoop& loop, const WaylandRegistry& registry, const WaylandSeat& seat,
    DesktopEntries entries, std::shared_ptr<History> history, Events events)
    : m_loop(loop)
    , m_seat(seat)
    , m_entries(std::move(entries))
    , m_history(std::move(history))
    , m_events(std::move(events))
    , m_manager(WaylandToplevelManager::find(
          registry, {.changed = [this](WaylandToplevelHandle& handle) { changed(handle); },
                     .closed = [this](WaylandToplevelHandle& handle) { closed(handle); },
                     .finished = [this] { finished(); }}))
{
    m_isTold = m_manager != nullptr;
}

WaylandToplevels::~WaylandToplevels() = default;

WaylandToplevels::Window WaylandToplevels::front() const
{
    const std::scoped_lock lock(m_mutex);
    return m_front;
}

void WaylandToplevels::requestActivation(Window window)
{
    m_loop.post([this, window = std::move(window)] {
        const auto found = std::ranges::find_if(
            m_known, [&window](const auto& entry) { return entry.second.window == window; });
        if (found == m_known.end() || front() == window) {
            return;
        }
        found->first->activate(m_seat.get());
    });
}

void WaylandToplevels::changed(WaylandToplevelHandle& handle)
{
    if (!m_isTold) {
        return;
    }
    const auto& state = handle.state();
    const auto activated = std::ranges::find(m_activated, &handle);
    if (state.isActivated && activated == m_activated.end()) {
        m_activated.push_back(&handle);
    } else if (!state.isActivated && activated != m_activated.end()) {
        m_activated.erase(activated);
    }
    if (state.isActivated || m_known.contains(&handle)) {
        follow(m_known[&handle], state.appID);
    }
    publish();
}

void WaylandToplevels::follow(Known& known, const QByteArray& appID)
{
    if (!known.window) {
        known.window = std::make_shared<TrackedWindow>(ownerOf(appID));
    } else if (known.appID != appID) {
        known.window->setOwner(ownerOf(appID));
    }
    known.appID = appID;
}

void WaylandToplevels::closed(WaylandToplevelHandle& handle)
{
    if (!m_isTold) {
        return;
    }
    std::erase(m_activated, &handle);
    const auto known = m_known.extract(&handle);
    // First it is not in front, then it is gone: nothing that is gone is active.
    publish();
    if (known) {
        known.mapped().window->setGone();
    }
}

void WaylandToplevels::finished()
{
    // Of the windows that there are more would be told, but not of those that take their place.
    lost();
    m_events.ended();
}

void WaylandToplevels::lost()
{
    m_isTold = false;
    m_activated.clear();
    for (const auto& entry : std::exchange(m_known, {})) {
        entry.second.window->setGone();
    }
}

void WaylandToplevels::publish()
{
    Window front = m_activated.empty() ? nullptr : m_known.at(m_activated.back()).window;
    {
        const std::scoped_lock lock(m_mutex);
        if (front == m_front) {
            return;
        }
        if (m_front) {
            m_history->add(m_front);
        }
        std::swap(m_front, front);
    }
    m_events.frontChanged();
}

TrackedWindow::Owner WaylandToplevels::ownerOf(const QByteArray& appID)
{
    const QString told = QString::fromUtf8(appID);
    const bool isOwn = isOwnName(told);
    const auto entry = m_entries.ofWindow(isOwn ? ownBundleIdentifier : told, QString(), QString());
    TrackedWindow::Owner owner;
    if (isOwn) {
        owner.applicationID = ownBundleIdentifier;
    } else if (entry) {
        owner.applicationID = entry->id;
    } else if (!told.isEmpty()) {
        owner.applicationID = told;
    }
    for (const auto& name : {owner.applicationID.value_or(QString()), told}) {
        if (!name.isEmpty() && !owner.names.contains(name)) {
            owner.names.append(name);
        }
    }
    owner.name = entry && !entry->name.isEmpty() ? std::optional(entry->name)
                 : !told.isEmpty()               ? std::optional(told)
                                                 : std::nullopt;
    owner.chord = pasteChord(
        owner.applicationID.value_or(QString()), told, entry && entry->isTerminalEmulator);
    return owner;
}

} // namespace tessly
