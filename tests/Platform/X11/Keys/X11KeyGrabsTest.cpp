#include "X11KeyGrabs.h"

#include "XSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace tessly::test {

namespace {

constexpr quint32 one = 18;
constexpr quint32 two = 19;
constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;
constexpr xcb_keycode_t placeOfOne = 10;
constexpr xcb_keycode_t placeOfTwo = 11;

/// Events as the server would send them, at times that the test chooses.
class X11KeyGrabsTest : public testing::Test
{
protected:
    X11KeyGrabsTest()
    {
        m_grabs.start();
        m_grabs.setPressed([this](auto reference) { m_pressed.push_back(reference); });
        EXPECT_EQ(m_grabs.grab(1, one, optionShift), HotKeyCenter::done);
        EXPECT_EQ(m_grabs.grab(2, two, optionShift), HotKeyCenter::done);
    }

    void send(
        std::uint8_t type, xcb_keycode_t key, xcb_timestamp_t time,
        int state = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1)
    {
        xcb_key_press_event_t event = {};
        event.response_type = type;
        event.detail = key;
        event.time = time;
        event.state = static_cast<std::uint16_t>(state);
        EXPECT_TRUE(m_grabs.handle(reinterpret_cast<const xcb_generic_event_t&>(event)));
    }
    void press(xcb_keycode_t key, xcb_timestamp_t time) { send(XCB_KEY_PRESS, key, time); }
    void release(xcb_keycode_t key, xcb_timestamp_t time) { send(XCB_KEY_RELEASE, key, time); }

    XSession m_session{XSession::WindowManager::none};
    X11EventLoop m_loop{m_session.display().toStdString()};
    X11KeyGrabs m_grabs{m_loop};
    std::vector<X11KeyGrabs::Reference> m_pressed;
};

TEST_F(X11KeyGrabsTest, RepeatsOfAHeldKeyAreNoPressesHoweverLongItIsHeld)
{
    // At first after the delay, then in quick succession.
    press(placeOfOne, 1000);
    for (xcb_timestamp_t time = 1660; time < 20000; time += 40) {
        press(placeOfOne, time);
    }
    EXPECT_THAT(m_pressed, ElementsAre(1));
    release(placeOfOne, 20000);
    press(placeOfOne, 20001);
    EXPECT_THAT(m_pressed, ElementsAre(1, 1));
}

TEST_F(X11KeyGrabsTest, AKeyWhoseReleaseWasNotHeardOfIsNotDead)
{
    press(placeOfOne, 1000);
    press(placeOfTwo, 1100);
    release(placeOfOne, 1200);
    // The second came up when nothing was grabbed any more.
    press(placeOfTwo, 5000);
    EXPECT_THAT(m_pressed, ElementsAre(1, 2, 2));
}

TEST_F(X11KeyGrabsTest, TimesThatBeginAnewAreCountedOn)
{
    press(placeOfOne, 0xFFFFFF00);
    press(placeOfOne, 0x50);
    EXPECT_THAT(m_pressed, ElementsAre(1));
}

TEST_F(X11KeyGrabsTest, ButtonsAndLayoutsInTheStateDoNotMatterButModifiersDo)
{
    constexpr int state = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1;
    constexpr int secondLayout = 1 << 13;
    send(
        XCB_KEY_PRESS, placeOfOne, 1000,
        state | secondLayout | XCB_BUTTON_MASK_1 | XCB_MOD_MASK_2 | XCB_MOD_MASK_LOCK);
    EXPECT_THAT(m_pressed, ElementsAre(1));
    send(XCB_KEY_PRESS, placeOfTwo, 2000, state | XCB_MOD_MASK_CONTROL);
    EXPECT_THAT(m_pressed, ElementsAre(1));
}

TEST_F(X11KeyGrabsTest, EventsThatAnotherClientMadeUpAreNotTaken)
{
    xcb_key_press_event_t event = {};
    event.response_type = XCB_KEY_PRESS | 0x80;
    event.detail = placeOfOne;
    event.state = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1;
    EXPECT_FALSE(m_grabs.handle(reinterpret_cast<const xcb_generic_event_t&>(event)));
    EXPECT_TRUE(m_pressed.empty());
}

} // namespace

} // namespace tessly::test
