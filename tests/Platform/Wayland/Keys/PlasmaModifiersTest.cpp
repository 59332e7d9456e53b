#include "PlasmaModifiers.h"

#include "TestCompositor.h"
#include "TestModifiers.h"
#include "TestSupport.h"
#include "WaylandDesktop.h"
#include "WaylandKeySender.h"
#include "keystate-server-protocol.h"

#include <gtest/gtest.h>

#include <memory>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

constexpr std::uint32_t alt = ORG_KDE_KWIN_KEYSTATE_KEY_ALT;
constexpr std::uint32_t shift = ORG_KDE_KWIN_KEYSTATE_KEY_SHIFT;
constexpr std::uint32_t capsLock = ORG_KDE_KWIN_KEYSTATE_KEY_CAPSLOCK;

/// Tells of locks only.
struct TestLocks : TestModifiers
{
    explicit TestLocks(wl_display* display)
        : TestModifiers(display, 4)
    {
    }
};

bool answer(const QFuture<bool>& future)
{
    EXPECT_TRUE(waitUntil([&] { return future.isFinished(); }));
    return future.isFinished() && future.result();
}

class PlasmaModifiersTest : public testing::Test
{
protected:
    WaylandDesktop& desktop()
    {
        if (!m_desktop) {
            m_desktop = std::make_unique<WaylandDesktop>(WaylandDesktop::Options{
                .display = m_compositor.display(),
                .entries = DesktopEntries(QStringList()),
                .timeout = m_timeout});
        }
        return *m_desktop;
    }
    void hold(TestModifiers& modifiers, std::uint32_t key)
    {
        m_compositor.run([&] { modifiers.hold(key); });
    }
    void letGo(TestModifiers& modifiers, std::uint32_t key)
    {
        m_compositor.run([&] { modifiers.letGo(key); });
    }
    /// Until the desktop knows what the compositor has told by now.
    void settle() { EXPECT_TRUE(answer(desktop().catchUp())); }

    TestCompositor m_compositor;
    std::chrono::milliseconds m_timeout = 1h;
    std::unique_ptr<WaylandDesktop> m_desktop;
};

TEST_F(PlasmaModifiersTest, theyAreWaitedForUntilTheLastIsUp)
{
    auto& modifiers = m_compositor.add<TestModifiers>();
    hold(modifiers, alt);
    const QFuture<bool> up = desktop().modifiersUp();
    hold(modifiers, shift);
    letGo(modifiers, alt);
    settle();
    EXPECT_FALSE(up.isFinished());
    letGo(modifiers, shift);
    EXPECT_TRUE(answer(up));
    EXPECT_TRUE(answer(desktop().modifiersUp()));
}

TEST_F(PlasmaModifiersTest, senderByFakeInputWaitsForThem)
{
    auto& modifiers = m_compositor.add<TestModifiers>();
    FakeInputSender sender(desktop());
    hold(modifiers, alt);
    auto ready = sender.ready();
    settle();
    EXPECT_FALSE(ready.isReady());
    letGo(modifiers, alt);
    EXPECT_TRUE(await(std::move(ready)));
}

TEST_F(PlasmaModifiersTest, thoseThatStayDownAreTooLate)
{
    auto& modifiers = m_compositor.add<TestModifiers>();
    hold(modifiers, alt);
    // Enough for what is asked of the compositor before.
    m_timeout = 300ms;
    EXPECT_FALSE(answer(desktop().modifiersUp()));
    letGo(modifiers, alt);
    settle();
    m_desktop.reset();
    m_timeout = 1h;
    EXPECT_TRUE(answer(desktop().modifiersUp()));
}

TEST_F(PlasmaModifiersTest, oneThatIsPressedLastThingBeforeKeepsTheKeysBack)
{
    auto& modifiers = m_compositor.add<TestModifiers>();
    const auto press = [this](WaylandKeyboard::Way way) {
        const QFuture<KeySender::Sending> sending =
            desktop().press(way, PasteChord::controlV, nullptr, [] { return true; });
        EXPECT_TRUE(waitUntil([&] { return sending.isFinished(); }));
        return sending.result();
    };
    hold(modifiers, alt);
    EXPECT_EQ(press(WaylandKeyboard::Way::fakeInput), KeySender::Sending::notInFront);
    letGo(modifiers, alt);
    EXPECT_EQ(press(WaylandKeyboard::Way::fakeInput), KeySender::Sending::failed)
        << "this compositor takes no keys";
}

TEST_F(PlasmaModifiersTest, locksAreNotHeld)
{
    auto& modifiers = m_compositor.add<TestModifiers>();
    hold(modifiers, capsLock);
    EXPECT_TRUE(answer(desktop().modifiersUp()));
}

TEST_F(PlasmaModifiersTest, whereTheCompositorDoesNotTellNothingIsWaitedFor)
{
    auto& locks = m_compositor.add<TestLocks>();
    hold(locks, capsLock);
    EXPECT_TRUE(answer(desktop().modifiersUp()));
}

TEST_F(PlasmaModifiersTest, whoWaitsIsAnsweredWhenTheCompositorEnds)
{
    auto& modifiers = m_compositor.add<TestModifiers>();
    hold(modifiers, alt);
    const QFuture<bool> up = desktop().modifiersUp();
    settle();
    m_compositor.end();
    m_desktop.reset();
    EXPECT_FALSE(answer(up));
}

} // namespace

} // namespace tessly::test
