#pragma once

#include "X11KeyEventPoster.h"

#include "FakeRunningApplication.h"
#include "Gate.h"
#include "TestDesktop.h"

#include <chrono>

namespace tessly::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

inline constexpr xcb_keycode_t leftControl = 37;
inline constexpr xcb_keycode_t leftShift = 50;
inline constexpr xcb_keycode_t leftAlt = 64;
inline constexpr xcb_keycode_t digit3 = 12;
inline constexpr xcb_keycode_t usualV = 55;
inline constexpr xcb_keycode_t dvorakV = 60;
inline constexpr xcb_keycode_t insertKey = 118;

inline constexpr std::uint16_t shift = XCB_MOD_MASK_SHIFT;
inline constexpr std::uint16_t capsLock = XCB_MOD_MASK_LOCK;
inline constexpr std::uint16_t control = XCB_MOD_MASK_CONTROL;
inline constexpr std::uint16_t alt = XCB_MOD_MASK_1;
inline constexpr std::uint16_t numLock = XCB_MOD_MASK_2;

/// How key events show the second layout.
inline constexpr std::uint16_t secondGroup = 1 << 13;

struct Stroke
{
    bool isPress = false;
    xcb_keycode_t code = 0;
    std::uint16_t state = 0;

    bool operator==(const Stroke&) const = default;
    friend void PrintTo(const Stroke& stroke, std::ostream* out)
    {
        *out << (stroke.isPress ? "press " : "release ") << int{stroke.code} << " in " << std::hex
             << stroke.state << std::dec;
    }
};
using Strokes = std::vector<Stroke>;

inline Stroke pressed(xcb_keycode_t key, int state)
{
    return {.isPress = true, .code = key, .state = static_cast<std::uint16_t>(state)};
}

inline Stroke released(xcb_keycode_t key, int state)
{
    return {.isPress = false, .code = key, .state = static_cast<std::uint16_t>(state)};
}

/// Ctrl+V, with what else is in the state of the events throughout.
inline Strokes controlV(xcb_keycode_t key = usualV, int state = 0)
{
    return {
        pressed(leftControl, state), pressed(key, state | control), released(key, state | control),
        released(leftControl, state | control)};
}

/// A target that notes its keys, in front.
class X11KeyEventPosterTest : public testing::Test
{
protected:
    static constexpr auto longTimeout = 20'000ms;
    static constexpr auto shortTimeout = 30ms;

    X11KeyEventPosterTest() { show("a", "A"); }

    void show(const char* instance, const char* name)
    {
        m_target = m_desktop.show(TestDesktop::look(instance, name), &m_window);
        m_desktop.client().forgetKeys();
    }

    TestDesktop& desktop() { return m_desktop; }
    XClient& client() { return m_desktop.client(); }
    std::shared_ptr<RunningApplication> target() { return m_target; }
    [[nodiscard]] xcb_window_t window() const { return m_window; }

    X11KeyEventPoster& poster(std::chrono::milliseconds releaseWait = longTimeout)
    {
        m_poster = std::make_unique<X11KeyEventPoster>(
            m_desktop.desktop(),
            X11KeyEventPoster::Clipboard{
                .holds = [this](WriteTicket) { return write(); },
                .offerAsPrimary = [this](WriteTicket) { return offer(); },
                .begin = [this](WriteTicket, bool) { return m_isThere.load(); }},
            m_owner, X11KeyEventPoster::Options{.releaseWait = releaseWait});
        return *m_poster;
    }
    // No lambdas: the poster may go, and what they capture with it, while they wait.
    QCoro::Task<bool> write()
    {
        if (m_holdsWrites) {
            co_await m_writes.pass();
        }
        co_return m_canWrite;
    }
    QCoro::Task<bool> offer()
    {
        ++m_offers;
        co_return m_canOffer;
    }
    void endPoster() { m_poster.reset(); }
    /// Which window is to own the clipboard when the keys are pressed.
    void setOwner(xcb_window_t owner) { m_owner = owner; }
    /// What the program offers is not what was written any more.
    void replaceContent() { m_isThere = false; }
    /// What is to be pasted is not on the clipboard until the gate is opened.
    Gate& holdWrites()
    {
        m_holdsWrites = true;
        m_writes.hold();
        return m_writes;
    }
    void refuseToWrite() { m_canWrite = false; }
    void refuseToOffer() { m_canOffer = false; }
    [[nodiscard]] int offers() const { return m_offers; }

    /// The keys that the target's client got.
    Strokes strokes()
    {
        Strokes strokes;
        for (const auto& key : client().keys()) {
            strokes.push_back({.isPress = key.isPress, .code = key.code, .state = key.state});
        }
        return strokes;
    }

    void setLayout(const QStringList& arguments)
    {
        // Without the empty option, the options of before stay.
        m_desktop.session().run(u"setxkbmap"_s, QStringList{u"-option"_s, u""_s} + arguments);
        client().sync();
        client().forgetKeys();
    }

    /// Lets some time go by, as long as starting a program takes.
    void letTimePass() { m_desktop.session().run(u"xdotool"_s, {u"getactivewindow"_s}); }

private:
    TestDesktop m_desktop;
    std::shared_ptr<RunningApplication> m_target;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    std::unique_ptr<X11KeyEventPoster> m_poster;
    /// Nobody owns the clipboard here unless a test says so.
    xcb_window_t m_owner = XCB_WINDOW_NONE;
    std::atomic<bool> m_isThere = true;
    Gate m_writes;
    bool m_holdsWrites = false;
    bool m_canWrite = true;
    bool m_canOffer = true;
    int m_offers = 0;
};

} // namespace tessly::test
