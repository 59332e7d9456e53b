#include "X11Keyboard.h"

#include "PasteKeys.h"
#include "X11WindowTracker.h"
#include "XcbReply.h"
#include "XcbXkb.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <ranges>
#include <string_view>
#include <utility>

namespace tessly {

namespace {

using Milliseconds = X11Keyboard::Milliseconds;

/// How often to look whether the user has let go.
constexpr Milliseconds lookInterval(10);
/// A grab that a held key had begun ends with the key's release; the news takes a moment.
constexpr Milliseconds grabsEnd(100);

constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;
/// The locked modifiers that are taken off for the time of a paste: all but CapsLock, and NumLock
/// where every layout has it. Those do not turn Ctrl+V into anything else, and applications are
/// used to them.
constexpr std::uint8_t changedLocks =
    static_cast<std::uint8_t>(~(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));

/// While this lives the server serves no one else, so that nothing changes between a look and what
/// is done upon it.
class ServerGrab
{
public:
    explicit ServerGrab(xcb_connection_t* connection)
        : m_connection(connection)
    {
        xcb_grab_server(m_connection);
    }
    ~ServerGrab()
    {
        xcb_ungrab_server(m_connection);
        xcb_flush(m_connection);
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

private:
    xcb_connection_t* m_connection;
};

} // namespace

void X11Keyboard::KeymapDeleter::operator()(xkb_keymap* keymap) const noexcept
{
    xkb_keymap_unref(keymap);
}

void X11Keyboard::ContextDeleter::operator()(xkb_context* context) const noexcept
{
    xkb_context_unref(context);
}

X11Keyboard::X11Keyboard(X11EventLoop& loop, X11WindowTracker& windows)
    : m_loop(loop)
    , m_windows(windows)
{
}

X11Keyboard::~X11Keyboard() = default;

void X11Keyboard::start()
{
    m_clipboard = m_loop.atom("CLIPBOARD");
    auto* const connection = m_loop.connection();
    const auto* test = xcb_get_extension_data(connection, &xcb_test_id);
    m_isUsable = test != nullptr && test->present != 0 &&
                 xkb_x11_setup_xkb_extension(
                     connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr) == 1;
}

void X11Keyboard::post(Paste paste)
{
    m_pastes.push_back(std::move(paste));
    if (m_pastes.size() == 1) {
        begin();
    }
}

void X11Keyboard::lost()
{
    m_pastes.clear();
}

void X11Keyboard::begin()
{
    m_phase = Phase::waitingForRelease;
    m_deadline = std::chrono::steady_clock::now() + m_pastes.front().releaseWait;
    step();
}

void X11Keyboard::step()
{
    if (m_pastes.empty()) {
        return;
    }
    if (!m_isUsable) {
        finish(Result::failed);
        return;
    }
    if (!m_windows.isInFrontNow(*m_pastes.front().target)) {
        finish(Result::targetNotInFront);
        return;
    }
    const bool isOver = std::chrono::steady_clock::now() >= m_deadline;
    const auto held = heldKeys();
    const bool isGrabbed = m_windows.isKeyboardGrabbed();
    if (!isOver && (isGrabbed || (!held.empty() && m_phase == Phase::waitingForRelease))) {
        m_loop.callAfter(lookInterval, [this] { step(); });
    } else if (isGrabbed && !held.empty() && m_phase == Phase::waitingForRelease) {
        lift(held);
        m_phase = Phase::waitingForGrabsEnd;
        m_deadline = std::chrono::steady_clock::now() + grabsEnd;
        m_loop.callAfter(lookInterval, [this] { step(); });
    } else {
        // Keys would go to whoever has grabbed the keyboard.
        const auto result = isGrabbed ? Result::targetNotInFront : press();
        if (result) {
            finish(*result);
        } else {
            m_loop.callAfter(lookInterval, [this] { step(); });
        }
    }
}

void X11Keyboard::finish(Result result)
{
    const auto completion = m_pastes.front().completion;
    m_pastes.pop_front();
    // Nothing that was asked of a server that is gone says anything about the target.
    if (xcb_connection_has_error(m_loop.connection()) != 0) {
        result = Result::failed;
    }
    completion->tell(result);
    if (!m_pastes.empty()) {
        begin();
    }
}

std::optional<X11Keyboard::Result> X11Keyboard::press()
{
    auto* const connection = m_loop.connection();
    const auto& paste = m_pastes.front();
    const auto map = keymap();
    const auto expectedGroup = group();
    if (!map || !expectedGroup) {
        return Result::failed;
    }
    // Looking for them takes a while: not with the server in hand.
    auto keys = PasteKeys::find(map.get(), paste.chord, *expectedGroup);
    if (!keys) {
        return paste.chord == PasteChord::shiftInsert ? Result::failed : Result::noLetter;
    }

    const ServerGrab grab(connection);
    if (!m_windows.isInFrontNow(*paste.target)) {
        return Result::targetNotInFront;
    }
    m_loop.handleArrived();
    if (m_windows.isKeyboardGrabbed()) {
        return std::nullopt;
    }
    if (!isContentThere(paste)) {
        return Result::contentReplaced;
    }
    lift(heldKeys());
    const auto state = owned(
        xcb_xkb_get_state_reply(connection, xcb_xkb_get_state(connection, coreKeyboard), nullptr));
    if (!state) {
        return Result::failed;
    }
    if (state->group != *expectedGroup) {
        // A key that was held had switched layouts.
        keys = PasteKeys::find(map.get(), paste.chord, state->group);
    }
    if (!keys) {
        return Result::failed;
    }

    const auto setState = [&](std::uint8_t lockedModifiers, std::uint8_t group) {
        // Latches go for good: they are for the next key, and the next key is this one.
        constexpr std::uint8_t allLatches = 0xff;
        xcb_xkb_latch_lock_state(
            connection, coreKeyboard, changedLocks, lockedModifiers, 1, group, allLatches, 1, 0);
    };
    for (const auto modifier : keys->modifiers) {
        fake(XCB_KEY_PRESS, modifier);
    }
    // After the modifiers: pressing two of them together may be what switches layouts here.
    setState(keys->lockedModifiers, keys->group);
    fake(XCB_KEY_PRESS, keys->key);
    fake(XCB_KEY_RELEASE, keys->key);
    for (const auto modifier : std::views::reverse(keys->modifiers)) {
        fake(XCB_KEY_RELEASE, modifier);
    }
    setState(state->lockedMods & changedLocks, state->lockedGroup);
    const auto done =
        owned(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return done ? Result::posted : Result::failed;
}

/// What another program has copied since may be a password. While the server serves no one else,
/// nobody can copy; what the owner's window offers is asked after who owns the selections, since
/// the program may have taken one back for another content meanwhile.
bool X11Keyboard::isContentThere(const Paste& paste) const
{
    const bool owns =
        selectionOwner(m_clipboard) == paste.owner &&
        (paste.chord != PasteChord::shiftInsert || selectionOwner(XCB_ATOM_PRIMARY) == paste.owner);
    return owns && paste.isThere && paste.isThere();
}

xcb_window_t X11Keyboard::selectionOwner(xcb_atom_t selection) const
{
    auto* const connection = m_loop.connection();
    const auto reply = owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, selection), nullptr));
    return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

std::optional<std::uint8_t> X11Keyboard::group() const
{
    auto* const connection = m_loop.connection();
    const auto state = owned(
        xcb_xkb_get_state_reply(connection, xcb_xkb_get_state(connection, coreKeyboard), nullptr));
    return state ? std::optional(state->group) : std::nullopt;
}

std::vector<xcb_keycode_t> X11Keyboard::heldKeys() const
{
    std::vector<xcb_keycode_t> held;
    const auto reply = owned(xcb_query_keymap_reply(
        m_loop.connection(), xcb_query_keymap(m_loop.connection()), nullptr));
    for (unsigned key = 0; reply && key < 256; ++key) {
        if ((reply->keys[key / 8] & (1U << (key % 8))) != 0) {
            held.push_back(static_cast<xcb_keycode_t>(key));
        }
    }
    return held;
}

void X11Keyboard::lift(const std::vector<xcb_keycode_t>& keys)
{
    for (const auto key : keys) {
        fake(XCB_KEY_RELEASE, key);
    }
}

void X11Keyboard::fake(std::uint8_t type, xcb_keycode_t key)
{
    xcb_test_fake_input(m_loop.connection(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

X11Keyboard::Keymap X11Keyboard::keymap() const
{
    const std::unique_ptr<xkb_context, ContextDeleter> context(
        xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
    // Made for each paste and not kept: it is half a megabyte, and layouts change.
    return Keymap(
        context ? xkb_x11_keymap_new_from_device(
                      context.get(), m_loop.connection(), testDevice(), XKB_KEYMAP_COMPILE_NO_FLAGS)
                : nullptr);
}

int X11Keyboard::testDevice() const
{
    // XTEST's keys are those of a keyboard of its own, whose layout need not be that of the one the
    // user types on.
    auto* const connection = m_loop.connection();
    const auto reply = owned(xcb_input_xi_query_device_reply(
        connection, xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL), nullptr));
    const int core = xkb_x11_get_core_keyboard_device_id(connection);
    if (!reply) {
        return core;
    }
    auto device = xcb_input_xi_query_device_infos_iterator(reply.get());
    for (; device.rem > 0; xcb_input_xi_device_info_next(&device)) {
        const std::string_view name(
            xcb_input_xi_device_info_name(device.data), device.data->name_len);
        if (device.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD &&
            device.data->attachment == core && name.ends_with("XTEST keyboard")) {
            return device.data->deviceid;
        }
    }
    return core;
}

} // namespace tessly
