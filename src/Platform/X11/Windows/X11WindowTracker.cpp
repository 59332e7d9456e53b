#include "X11WindowTracker.h"

#include "LoopAnswer.h"
#include "X11Property.h"
#include "X11WindowOwner.h"
#include "XcbReply.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

namespace tessly {

namespace {

constexpr xcb_window_t noWindow = XCB_WINDOW_NONE;

constexpr auto activeWindowName = "_NET_ACTIVE_WINDOW";
constexpr auto managerCheckName = "_NET_SUPPORTING_WM_CHECK";
constexpr auto supportedName = "_NET_SUPPORTED";
constexpr auto classNameProperty = "WM_CLASS";
constexpr auto applicationIDProperty = "_GTK_APPLICATION_ID";
constexpr auto currentDesktopName = "_NET_CURRENT_DESKTOP";
constexpr std::uint32_t onAllDesktops = 0xffffffff;
constexpr auto clockName = "_TESSLY_CLOCK";

/// Deeper than any real window; ends a walk through a tree that changes underneath.
constexpr std::size_t deepestWindow = 64;

} // namespace

X11WindowTracker::X11WindowTracker(X11EventLoop& loop, DesktopEntries entries)
    : m_loop(loop)
    , m_entries(std::move(entries))
{
}

X11WindowTracker::Front X11WindowTracker::front() const
{
    const std::scoped_lock lock(m_mutex);
    return m_front;
}

void X11WindowTracker::setFrontChanged(std::function<void()> changed)
{
    const std::scoped_lock lock(m_mutex);
    m_frontChanged = std::move(changed);
}

QFuture<bool> X11WindowTracker::catchUp(History::TimePoint since)
{
    return askLoop(m_loop, false, [this, since](const auto& answer) {
        // Whatever is asked: what the server has sent before its answer is handled before that.
        m_loop.awaitReply<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus(m_loop.connection()),
            [this, since, answer](const xcb_get_input_focus_reply_t* reply) {
                if (reply != nullptr) {
                    refresh();
                    identifyAgain(m_history->since(since));
                    if (m_candidate) {
                        identifyAgain(*m_candidate);
                    }
                }
                answer(reply != nullptr);
            });
    });
}

QFuture<std::optional<QRect>> X11WindowTracker::frontRectangle()
{
    return askLoop(m_loop, std::optional<QRect>(), [this](const auto& answer) {
        const auto window = front().window;
        if (!window) {
            return;
        }
        xcb_connection_t* const connection = m_loop.connection();
        const auto size = xcb_get_geometry(connection, window->id());
        const auto place = xcb_translate_coordinates(connection, window->id(), m_loop.root(), 0, 0);
        const auto sizeTold = owned(xcb_get_geometry_reply(connection, size, nullptr));
        const auto placeTold = owned(xcb_translate_coordinates_reply(connection, place, nullptr));
        if (sizeTold && placeTold) {
            answer(QRect(placeTold->dst_x, placeTold->dst_y, sizeTold->width, sizeTold->height));
        }
    });
}

void X11WindowTracker::start()
{
    m_loop.learnAtoms(
        {activeWindowName, managerCheckName, supportedName, currentDesktopName, clockName,
         applicationIDProperty});
    auto* const connection = m_loop.connection();
    // The last is for the system tray's sake: one that starts says so to whom these events go.
    const std::uint32_t rootEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE |
                                     XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, m_loop.root(), XCB_CW_EVENT_MASK, &rootEvents);

    m_clockWindow = xcb_generate_id(connection);
    const std::array<std::uint32_t, 2> values = {1, XCB_EVENT_MASK_PROPERTY_CHANGE};
    xcb_create_window(
        connection, 0, m_clockWindow, m_loop.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());

    findWindowManager();
    refresh();
}

void X11WindowTracker::handle(const xcb_generic_event_t& event)
{
    // Not events that another client sent: those have a bit more.
    switch (event.response_type) {
    case XCB_PROPERTY_NOTIFY:
        handleProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        handleDestroyed(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
        break;
    case XCB_MAP_NOTIFY:
        handleMapping(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
        break;
    case XCB_UNMAP_NOTIFY:
        handleMapping(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
        break;
    case XCB_FOCUS_IN:
        handleFocus(reinterpret_cast<const xcb_focus_in_event_t&>(event), true);
        break;
    case XCB_FOCUS_OUT:
        handleFocus(reinterpret_cast<const xcb_focus_out_event_t&>(event), false);
        break;
    default:
        // Errors come here too: windows that went before a request about them arrived.
        break;
    }
}

void X11WindowTracker::handleProperty(const xcb_property_notify_event_t& event)
{
    if (event.window == m_clockWindow) {
        for (const auto& window : std::exchange(m_toActivate, {})) {
            activate(*window, event.time);
        }
    } else if (event.window == m_loop.root()) {
        if (event.atom == m_loop.atom(activeWindowName)) {
            refresh();
        } else if (
            event.atom == m_loop.atom(managerCheckName) ||
            event.atom == m_loop.atom(supportedName)) {
            findWindowManager();
            refresh();
        }
    } else if (
        m_candidate && event.window == m_candidate->id() &&
        (event.atom == m_loop.atom(classNameProperty) ||
         event.atom == m_loop.atom(applicationIDProperty))) {
        identifyAgain(*m_candidate);
    }
}

void X11WindowTracker::handleGone(xcb_window_t window)
{
    if (const auto known = m_watched.extract(window)) {
        if (const auto record = known.mapped().lock()) {
            record->setGone();
        }
    }
}

void X11WindowTracker::handleDestroyed(xcb_window_t window)
{
    handleGone(window);
    if (window == m_manager) {
        findWindowManager();
        refresh();
    } else if (m_candidate && window == m_candidate->id()) {
        m_candidate.reset();
        refresh();
    }
}

void X11WindowTracker::handleMapping(xcb_window_t window)
{
    if (m_candidate && window == m_candidate->id()) {
        refresh();
    }
}

void X11WindowTracker::handleFocus(const xcb_focus_in_event_t& event, bool isIn)
{
    if (event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB) {
        // The focus stays where it is, only keys go elsewhere for a while.
        if (m_candidate && event.event == m_candidate->id()) {
            m_isKeyboardGrabbed = event.mode == XCB_NOTIFY_MODE_GRAB && !isIn;
        }
        return;
    }
    if (event.detail == XCB_NOTIFY_DETAIL_INFERIOR || event.detail == XCB_NOTIFY_DETAIL_POINTER) {
        return;
    }
    refresh();
    if (m_candidate && event.event == m_candidate->id()) {
        m_isKeyboardGrabbed = event.mode == XCB_NOTIFY_MODE_WHILE_GRABBED;
    }
}

void X11WindowTracker::lost()
{
    for (const auto& entry : m_watched) {
        if (const auto record = entry.second.lock()) {
            record->setGone();
        }
    }
    m_watched.clear();
    m_candidate.reset();
    publish(nullptr, false);
}

void X11WindowTracker::findWindowManager()
{
    auto* const connection = m_loop.connection();
    m_manager = noWindow;
    const auto named = X11Property(m_loop, m_loop.root(), managerCheckName).value();
    if (!named || *named == noWindow) {
        return;
    }
    // The property outlives a manager that crashed; its window does not.
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, *named, XCB_CW_EVENT_MASK, &events);
    X11Property check(m_loop, *named, managerCheckName);
    X11Property supported(m_loop, m_loop.root(), supportedName, 16 * 1024);
    if (check.value() == *named &&
        std::ranges::count(supported.values(), m_loop.atom(activeWindowName)) > 0) {
        m_manager = *named;
    }
}

void X11WindowTracker::refresh()
{
    const auto before = m_candidate;
    const auto id = candidate();
    m_candidate = id == noWindow ? nullptr : watched(id);
    if (before != m_candidate) {
        m_isKeyboardGrabbed = false;
        if (before && !before->isGone()) {
            watch(before->id(), false);
        }
        std::erase_if(m_watched, [this](const auto& entry) {
            if (!entry.second.expired()) {
                return false;
            }
            const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
            xcb_change_window_attributes(
                m_loop.connection(), entry.first, XCB_CW_EVENT_MASK, &none);
            return true;
        });
    }
    // Asked after the window is watched: one that goes from now on is noticed.
    const auto facts = m_candidate ? attributes(m_candidate->id()) : nullptr;
    const bool isViewable = facts && facts->map_state != XCB_MAP_STATE_UNMAPPED;
    if (m_candidate && !facts) {
        handleGone(m_candidate->id());
        m_candidate.reset();
    }
    if (m_candidate && isViewable) {
        publish(m_candidate, hasFocus(m_candidate->id()));
    } else {
        publish(nullptr, false);
    }
    if (m_candidate && m_candidate != before && !isViewable &&
        !m_candidate->owner().names.empty()) {
        // It was in front for a moment, and is hidden again by now.
        m_history->add(m_candidate);
    }
}

void X11WindowTracker::publish(std::shared_ptr<X11Window> window, bool hasFocus)
{
    Front front = {.window = std::move(window), .hasFocus = hasFocus};
    const std::scoped_lock lock(m_mutex);
    if (front.window == m_front.window) {
        m_front.hasFocus = hasFocus;
        return;
    }
    if (m_front.window) {
        m_history->add(m_front.window);
    }
    std::swap(m_front, front);
    if (m_frontChanged) {
        m_frontChanged();
    }
}

void X11WindowTracker::identifyAgain(const History::Windows& windows)
{
    for (const auto& window : windows) {
        const auto known = m_watched.find(window->id());
        const auto record = known == m_watched.end() ? nullptr : known->second.lock();
        if (record == window) {
            identifyAgain(*record);
        }
    }
}

void X11WindowTracker::identifyAgain(X11Window& window)
{
    auto owner = ownerOf(window.id(), m_loop, m_entries);
    // One that has gone tells nothing; what is known of it stays known.
    if (!owner.names.empty()) {
        window.setOwner(std::move(owner));
        watch(window.id(), m_candidate.get() == &window);
    }
}

xcb_window_t X11WindowTracker::candidate()
{
    if (m_manager == noWindow) {
        return applicationWindow(focus());
    }
    const auto named = X11Property(m_loop, m_loop.root(), activeWindowName).value();
    // Some managers name a window of their own while nothing is active.
    if (!named || *named == m_loop.root() || *named == m_manager) {
        return noWindow;
    }
    // Some have another window for it (Mutter 48, while a Wayland window is active), or name one
    // that no manager manages.
    const auto facts = attributes(*named);
    return facts && facts->override_redirect != 0 ? noWindow : *named;
}

std::shared_ptr<X11Window> X11WindowTracker::watched(xcb_window_t window)
{
    const auto known = m_watched.find(window);
    auto record = known == m_watched.end() ? nullptr : known->second.lock();
    if (!record) {
        // Watch first: a window that goes while it is looked at must not go unnoticed.
        watch(window, false);
        record = std::make_shared<X11Window>(window, ownerOf(window, m_loop, m_entries));
        m_watched.insert_or_assign(window, record);
    }
    watch(window, true);
    return record;
}

void X11WindowTracker::watch(xcb_window_t window, bool isCandidate)
{
    std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (isCandidate) {
        events |= XCB_EVENT_MASK_FOCUS_CHANGE;
        // Property changes are many (titles that show progress): only until the class is known.
        const auto known = m_watched.find(window);
        const auto record = known == m_watched.end() ? nullptr : known->second.lock();
        if (record && !record->owner().applicationID) {
            events |= XCB_EVENT_MASK_PROPERTY_CHANGE;
        }
    }
    xcb_change_window_attributes(m_loop.connection(), window, XCB_CW_EVENT_MASK, &events);
}

XcbOwned<xcb_get_window_attributes_reply_t> X11WindowTracker::attributes(xcb_window_t window) const
{
    return owned(xcb_get_window_attributes_reply(
        m_loop.connection(), xcb_get_window_attributes(m_loop.connection(), window), nullptr));
}

xcb_window_t X11WindowTracker::focus() const
{
    const auto reply = owned(xcb_get_input_focus_reply(
        m_loop.connection(), xcb_get_input_focus(m_loop.connection()), nullptr));
    const bool isWindow = reply && reply->focus != XCB_INPUT_FOCUS_NONE &&
                          reply->focus != XCB_INPUT_FOCUS_POINTER_ROOT;
    return isWindow ? reply->focus : noWindow;
}

std::vector<xcb_window_t> X11WindowTracker::lineage(xcb_window_t window) const
{
    std::vector<xcb_window_t> windows;
    while (window != noWindow && window != m_loop.root() && windows.size() < deepestWindow) {
        windows.push_back(window);
        const auto tree = owned(xcb_query_tree_reply(
            m_loop.connection(), xcb_query_tree(m_loop.connection(), window), nullptr));
        window = tree ? tree->parent : noWindow;
    }
    return windows;
}

bool X11WindowTracker::hasFocus(xcb_window_t window) const
{
    const auto focused = focus();
    // Toolkits like to give the focus to a child of theirs.
    return focused == window || std::ranges::count(lineage(focused), window) > 0;
}

xcb_window_t X11WindowTracker::applicationWindow(xcb_window_t inner)
{
    const auto windows = lineage(inner);
    // A manager that does not tell the active window may still put frames around windows; the frame
    // has no class.
    for (const auto window : std::views::reverse(windows)) {
        if (!X11Property(m_loop, window, classNameProperty).bytes().empty()) {
            return window;
        }
    }
    return windows.empty() ? noWindow : windows.back();
}

bool X11WindowTracker::isInFrontNow(const X11Window& window)
{
    return !window.isGone() && candidate() == window.id() && hasFocus(window.id());
}

void X11WindowTracker::requestActivation(std::shared_ptr<const X11Window> window)
{
    m_loop.post([this, window = std::move(window)]() mutable {
        const auto current = front();
        if (window->isGone() || (current.window == window && current.hasFocus)) {
            return;
        }
        // Managers ignore requests that are older than the last thing the user did, and only the
        // server knows the time: the answer to this change brings it.
        m_toActivate.push_back(std::move(window));
        xcb_change_property(
            m_loop.connection(), XCB_PROP_MODE_APPEND, m_clockWindow, m_loop.atom(clockName),
            XCB_ATOM_STRING, 8, 0, "");
    });
}

void X11WindowTracker::activate(const X11Window& window, xcb_timestamp_t time)
{
    auto* const connection = m_loop.connection();
    if (m_manager == noWindow) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection, window.id(), XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_set_input_focus(connection, XCB_INPUT_FOCUS_PARENT, window.id(), time);
        return;
    }
    // Some managers bring no window to the front that is on another workspace.
    X11Property ofWindow(m_loop, window.id(), "_NET_WM_DESKTOP");
    X11Property current(m_loop, m_loop.root(), currentDesktopName);
    const auto workspace = ofWindow.value();
    if (workspace && *workspace != onAllDesktops && workspace != current.value()) {
        askManager(m_loop.root(), currentDesktopName, {*workspace, time});
    }
    constexpr std::uint32_t asPager = 2;
    askManager(window.id(), activeWindowName, {asPager, time});
}

void X11WindowTracker::askManager(
    xcb_window_t window, const char* request, std::initializer_list<std::uint32_t> arguments)
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = m_loop.atom(request);
    std::ranges::copy(arguments, message.data.data32);
    xcb_send_event(
        m_loop.connection(), 0, m_loop.root(),
        XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
        reinterpret_cast<const char*>(&message));
}

} // namespace tessly
