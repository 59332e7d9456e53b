#include "X11KeyGrabs.h"

#include "XcbReply.h"
#include "XcbXkb.h"

#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <chrono>
#include <ranges>
#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcKeyGrabs, "com.brackmoor.tessly.X11HotKeyCenter")

/// Virtual key codes and the places they stand for, as the kernel numbers keys and the X server
/// after it, eight higher: what is printed on a key differs from layout to layout, its place does
/// not.
struct KeyPlace
{
    quint32 keyCode;
    xcb_keycode_t place;
};
constexpr std::array<KeyPlace, 10> keyPlaces = {{
    {18, 10}, // 1
    {19, 11}, // 2
    {20, 12}, // 3
    {21, 13}, // 4
    {23, 14}, // 5
    {22, 15}, // 6
    {26, 16}, // 7
    {28, 17}, // 8
    {25, 18}, // 9
    {29, 19}, // 0
}};

constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;
constexpr std::uint8_t allModifiers = 0xff;
/// Where a server cannot be asked: longer than keyboards are usually set to.
constexpr std::uint32_t usualSilence = 1000;
/// What a busy machine may add to the time between two repeats of a key.
constexpr std::uint32_t lateness = 250;

} // namespace

X11KeyGrabs::X11KeyGrabs(X11EventLoop& loop)
    : m_loop(loop)
{
}

void X11KeyGrabs::start()
{
    auto* const connection = m_loop.connection();
    m_map = X11ModifierMap::read(m_loop);
    const auto use = owned(xcb_xkb_use_extension_reply(
        connection, xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION),
        nullptr));
    const auto* extension = xcb_get_extension_data(connection, &xcb_xkb_id);
    if (!use || use->supported == 0 || extension == nullptr) {
        qCWarning(lcKeyGrabs, "the X server has no keyboard extension: held hot keys repeat");
        return;
    }
    m_keyboardEvent = extension->first_event;
    // Servers tell clients that use the extension of changes by the extension's events only.
    constexpr std::uint16_t events =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(
        connection, coreKeyboard, events, 0, XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY, parts, parts,
        nullptr);
    // A held key is to repeat as presses only. Usually each is preceded by a release, which looks
    // as if the user let go.
    constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto flags = owned(xcb_xkb_per_client_flags_reply(
        connection, xcb_xkb_per_client_flags(connection, coreKeyboard, flag, flag, 0, 0, 0),
        nullptr));
    if (!flags || (flags->value & flag) == 0) {
        qCWarning(lcKeyGrabs, "the X server does not tell repeats from presses");
    }
}

void X11KeyGrabs::setPressed(std::function<void(Reference)> pressed)
{
    m_pressed = std::move(pressed);
}

X11KeyGrabs::Status X11KeyGrabs::grab(Reference reference, quint32 keyCode, quint32 modifiers)
{
    if (xcb_connection_has_error(m_loop.connection()) != 0) {
        // Nothing that is known of the keyboard can be trusted: the server may have gone before it
        // told.
        return HotKeyCenter::unavailable;
    }
    const auto* const place = std::ranges::find(keyPlaces, keyCode, &KeyPlace::keyCode);
    if (place == keyPlaces.end() || !serverMask(modifiers)) {
        return HotKeyCenter::invalid;
    }
    // The server does not mind when one client grabs a key twice.
    const bool isOwn = std::ranges::any_of(m_keys | std::views::values, [&](const Key& other) {
        return other.code == place->place && other.modifiers == modifiers;
    });
    if (isOwn) {
        return HotKeyCenter::taken;
    }
    Key key = {.code = place->place, .modifiers = modifiers, .mask = {}};
    const Status status = grab(key);
    if (status == HotKeyCenter::done) {
        m_keys.emplace(reference, key);
    }
    return status;
}

void X11KeyGrabs::ungrab(Reference reference)
{
    if (auto known = m_keys.extract(reference)) {
        ungrab(known.mapped());
    }
}

X11KeyGrabs::Status X11KeyGrabs::grab(Key& key)
{
    auto* const connection = m_loop.connection();
    const auto mask = serverMask(key.modifiers);
    if (!mask) {
        return HotKeyCenter::invalid;
    }
    std::vector<std::pair<std::uint8_t, xcb_void_cookie_t>> requests;
    for (const std::uint8_t locks : lockCombinations()) {
        const auto modifiers = static_cast<std::uint8_t>(*mask | locks);
        requests.emplace_back(
            modifiers, xcb_grab_key_checked(
                           connection, 0, m_loop.root(), modifiers, key.code, XCB_GRAB_MODE_ASYNC,
                           XCB_GRAB_MODE_ASYNC));
    }
    Status status = HotKeyCenter::done;
    std::vector<std::uint8_t> granted;
    for (const auto& [modifiers, cookie] : requests) {
        const auto error = owned(xcb_request_check(connection, cookie));
        if (!error) {
            granted.push_back(modifiers);
        } else {
            status = error->error_code == XCB_ACCESS ? HotKeyCenter::taken : HotKeyCenter::invalid;
        }
    }
    if (xcb_connection_has_error(connection) != 0) {
        // No answer looks like no error.
        return HotKeyCenter::unavailable;
    }
    if (status != HotKeyCenter::done) {
        for (const std::uint8_t modifiers : granted) {
            xcb_ungrab_key(connection, key.code, m_loop.root(), modifiers);
        }
        return status;
    }
    key.mask = mask;
    return status;
}

void X11KeyGrabs::ungrab(Key& key)
{
    if (const auto mask = std::exchange(key.mask, std::nullopt)) {
        for (const std::uint8_t locks : lockCombinations()) {
            xcb_ungrab_key(
                m_loop.connection(), key.code, m_loop.root(),
                static_cast<std::uint16_t>(*mask | locks));
        }
    }
}

bool X11KeyGrabs::handle(const xcb_generic_event_t& event)
{
    // Not events that another client made up: those have a bit more.
    switch (event.response_type) {
    case XCB_KEY_PRESS:
        handlePress(reinterpret_cast<const xcb_key_press_event_t&>(event));
        return true;
    case XCB_KEY_RELEASE:
        m_down.erase(reinterpret_cast<const xcb_key_release_event_t&>(event).detail);
        return true;
    case XCB_MAPPING_NOTIFY:
        // Sent to every client, and not about a grab.
        if (reinterpret_cast<const xcb_mapping_notify_event_t&>(event).request !=
            XCB_MAPPING_POINTER) {
            lookAtKeyboardLater();
        }
        return false;
    default:
        if (m_keyboardEvent == 0 || event.response_type != m_keyboardEvent) {
            return false;
        }
        lookAtKeyboardLater();
        return true;
    }
}

void X11KeyGrabs::handlePress(const xcb_key_press_event_t& event)
{
    const auto mask = static_cast<std::uint8_t>(event.state & allModifiers & ~lockMask());
    const auto pressed = std::ranges::find_if(m_keys, [&](const auto& entry) {
        return entry.second.code == event.detail && entry.second.mask == mask;
    });
    if (pressed == m_keys.end() || isRepeat(event)) {
        return;
    }
    if (m_pressed) {
        m_pressed(pressed->first);
    }
    m_down.insert_or_assign(event.detail, Down{event.time, longestSilence()});
}

bool X11KeyGrabs::isRepeat(const xcb_key_press_event_t& event)
{
    const auto down = m_down.find(event.detail);
    if (down == m_down.end()) {
        return false;
    }
    // The release is not heard of when another key began the grab that was on at the time. Such a
    // key must not stay dead.
    const std::uint32_t silence = event.time - down->second.lastSeen;
    if (silence > down->second.longestSilence) {
        return false;
    }
    down->second.lastSeen = event.time;
    return true;
}

std::uint32_t X11KeyGrabs::longestSilence() const
{
    auto* const connection = m_loop.connection();
    const auto controls = owned(xcb_xkb_get_controls_reply(
        connection, xcb_xkb_get_controls(connection, coreKeyboard), nullptr));
    const std::uint32_t longest =
        controls ? std::max<std::uint32_t>(controls->repeatDelay, controls->repeatInterval)
                 : usualSilence;
    return longest + lateness;
}

void X11KeyGrabs::lookAtKeyboardLater()
{
    // One change of the layout brings many events, and so does every key that a program makes up
    // for itself: one look for all that are here.
    if (!std::exchange(m_isKeyboardToBeLookedAt, true)) {
        m_loop.callAfter(X11EventLoop::Milliseconds(0), [this] {
            m_isKeyboardToBeLookedAt = false;
            followKeyboard();
        });
    }
}

void X11KeyGrabs::followKeyboard()
{
    const auto map = X11ModifierMap::read(m_loop);
    if (map == m_map || m_keys.empty()) {
        m_map = map;
        return;
    }
    qCInfo(lcKeyGrabs, "The modifiers are in other places now: hot keys are grabbed anew.");
    for (auto& key : m_keys | std::views::values) {
        ungrab(key);
    }
    m_map = map;
    for (auto& key : m_keys | std::views::values) {
        if (const Status status = grab(key); status != HotKeyCenter::done) {
            qCWarning(
                lcKeyGrabs, "A hot key was lost: key=%u modifiers=%u: %d", key.code, key.modifiers,
                status);
        }
    }
}

std::optional<std::uint8_t> X11KeyGrabs::serverMask(quint32 modifiers) const
{
    // Command is Ctrl on this keyboard and Option is Alt; Control takes what is left, Super.
    const std::array<std::pair<quint32, unsigned>, 4> masks = {{
        {HotKeyCenter::commandKey, XCB_MOD_MASK_CONTROL},
        {HotKeyCenter::shiftKey, XCB_MOD_MASK_SHIFT},
        {HotKeyCenter::optionKey, m_map.alt},
        {HotKeyCenter::controlKey, m_map.super},
    }};
    unsigned mask = 0;
    for (const auto& [modifier, serverModifier] : masks) {
        if ((modifiers & modifier) == 0) {
            continue;
        }
        if (serverModifier == 0) {
            return std::nullopt;
        }
        mask |= serverModifier;
        modifiers &= ~modifier;
    }
    return modifiers == 0 ? std::optional(static_cast<std::uint8_t>(mask)) : std::nullopt;
}

std::uint8_t X11KeyGrabs::lockMask() const
{
    return static_cast<std::uint8_t>(
        XCB_MOD_MASK_LOCK | ((m_map.numLock | m_map.scrollLock) & ~(m_map.alt | m_map.super)));
}

std::vector<std::uint8_t> X11KeyGrabs::lockCombinations() const
{
    // All subsets of the mask.
    std::vector<std::uint8_t> combinations;
    const unsigned all = lockMask();
    for (unsigned subset = all;; subset = (subset - 1) & all) {
        combinations.push_back(static_cast<std::uint8_t>(subset));
        if (subset == 0) {
            return combinations;
        }
    }
}

} // namespace tessly
