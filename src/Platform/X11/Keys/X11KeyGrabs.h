#pragma once

#include "HotKeyCenter.h"
#include "X11EventLoop.h"
#include "X11ModifierMap.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace tessly {

/// Grabs keys of the whole X server. Loop thread.
///
/// The server compares the modifiers of a press with those of a grab exactly, the locks included.
/// So each key is grabbed once for each combination of CapsLock, NumLock and ScrollLock, and is
/// held only if all of these are.
class X11KeyGrabs
{
public:
    using Reference = HotKeyCenter::Reference;
    using Status = HotKeyCenter::Status;

    explicit X11KeyGrabs(X11EventLoop& loop);

    void start();
    /// Told of each key that goes down, once for as long as it is held.
    void setPressed(std::function<void(Reference)> pressed);

    /// `keyCode` and `modifiers` are HotKeyCenter's.
    [[nodiscard]] Status grab(Reference reference, quint32 keyCode, quint32 modifiers);
    void ungrab(Reference reference);

    /// Whether the event was one of these.
    bool handle(const xcb_generic_event_t& event);

private:
    struct Key
    {
        xcb_keycode_t code = 0;
        /// HotKeyCenter's.
        quint32 modifiers = 0;
        /// What the server was asked for, and grants; none if it does not.
        std::optional<std::uint8_t> mask;
    };

    /// A key that is down, as far as is known.
    struct Down
    {
        xcb_timestamp_t lastSeen = 0;
        /// A key that is still down is heard of within this time, by its repeating.
        std::uint32_t longestSilence = 0;
    };

    [[nodiscard]] std::optional<std::uint8_t> serverMask(quint32 modifiers) const;
    [[nodiscard]] std::uint8_t lockMask() const;
    [[nodiscard]] std::vector<std::uint8_t> lockCombinations() const;
    [[nodiscard]] Status grab(Key& key);
    void ungrab(Key& key);
    void handlePress(const xcb_key_press_event_t& event);
    void lookAtKeyboardLater();
    void followKeyboard();
    [[nodiscard]] bool isRepeat(const xcb_key_press_event_t& event);
    [[nodiscard]] std::uint32_t longestSilence() const;

    X11EventLoop& m_loop;
    X11ModifierMap m_map;
    std::map<Reference, Key> m_keys;
    std::map<xcb_keycode_t, Down> m_down;
    std::function<void(Reference)> m_pressed;
    bool m_isKeyboardToBeLookedAt = false;
    /// How the extension's events are marked; 0 where the server lacks it.
    std::uint8_t m_keyboardEvent = 0;
};

} // namespace tessly
