#include "X11HotKeyCenter.h"

#include "HotKeyDesktop.h"
#include "LogCapture.h"
#include "contract/HotKeyCenterContract.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, HotKeyCenterContract, HotKeyDesktop);

constexpr quint32 one = 18;
constexpr quint32 two = 19;
constexpr quint32 three = 20;
constexpr quint32 optionShift = HotKeyCenter::optionKey | HotKeyCenter::shiftKey;
/// The keys 1 to 9 and 0.
constexpr std::array<quint32, 10> digits = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};

constexpr int capsLock = XCB_MOD_MASK_LOCK;
constexpr int numLock = XCB_MOD_MASK_2;
constexpr int scrollLock = XCB_MOD_MASK_3;

class X11HotKeyCenterTest : public testing::Test
{
protected:
    X11HotKeyCenterTest()
    {
        center().installHandler([this](const HotKeyCenter::Press& press) {
            m_heard.push_back(press.key.id);
            return HotKeyCenter::done;
        });
    }

    HotKeyCenter& center() { return m_desktop.center(); }
    XClient& client() { return m_desktop.client(); }

    HotKeyCenter::Status add(quint32 keyCode, quint32 id)
    {
        return await(std::move(center().registerKey(keyCode, optionShift, {.id = id}).status));
    }
    void addDigits()
    {
        quint32 id = 0;
        for (const quint32 keyCode : digits) {
            ASSERT_EQ(add(keyCode, ++id), HotKeyCenter::done);
        }
    }

    const std::vector<quint32>& heard()
    {
        m_desktop.settle();
        return m_heard;
    }
    std::vector<quint32> heardAfterPressing(quint32 keyCode)
    {
        m_heard.clear();
        m_desktop.press(keyCode, optionShift);
        return heard();
    }

    void setLayout(const QStringList& arguments)
    {
        m_desktop.session().run(u"setxkbmap"_s, arguments);
        // Two turns of the loop: one brings the news, the next looks at the keyboard.
        m_desktop.settle();
        m_desktop.settle();
    }
    void remap(const QStringList& expressions)
    {
        QStringList arguments;
        for (const QString& expression : expressions) {
            arguments << u"-e"_s << expression;
        }
        m_desktop.session().run(u"xmodmap"_s, arguments);
        m_desktop.settle();
        m_desktop.settle();
    }

    qsizetype timesGrabbedAnew() const
    {
        return static_cast<qsizetype>(
            m_log.lines(u"com.brackmoor.tessly.X11HotKeyCenter"_s).size());
    }

    LogCapture m_log;
    HotKeyDesktop m_desktop;
    std::vector<quint32> m_heard;
};

TEST_F(X11HotKeyCenterTest, EveryKeyOfTheUpperRowIsKnown)
{
    addDigits();
    for (const quint32 keyCode : digits) {
        m_desktop.press(keyCode, optionShift);
    }
    EXPECT_THAT(heard(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST_F(X11HotKeyCenterTest, KeysOfATestProgramAreHeardLikeTheUsers)
{
    addDigits();
    m_desktop.session().run(u"xdotool"_s, {u"key"_s, u"alt+shift+3"_s});
    EXPECT_THAT(heard(), ElementsAre(3));
}

TEST_F(X11HotKeyCenterTest, LocksDoNotMatter)
{
    // Where most keyboards have no ScrollLock.
    remap({u"add mod3 = Scroll_Lock"_s});
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    for (const int locks :
         {capsLock, numLock, scrollLock, capsLock | numLock, capsLock | scrollLock,
          numLock | scrollLock, capsLock | numLock | scrollLock}) {
        client().lock(static_cast<std::uint8_t>(locks), 0);
        EXPECT_THAT(heardAfterPressing(one), ElementsAre(1)) << locks;
    }
}

TEST_F(X11HotKeyCenterTest, KeysStayInTheirPlacesInEveryLayout)
{
    addDigits();
    for (const QString& layout : {u"fr"_s, u"de"_s, u"ru"_s, u"us,ru"_s, u"us(dvorak)"_s}) {
        setLayout({layout});
        m_heard.clear();
        for (const quint32 keyCode : digits) {
            m_desktop.press(keyCode, optionShift);
        }
        EXPECT_THAT(heard(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10)) << layout.toStdString();
    }
}

TEST_F(X11HotKeyCenterTest, ASecondLayoutThatIsOnDoesNotMatter)
{
    setLayout({u"us,ru"_s});
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    client().lock(numLock, 1);
    ASSERT_EQ(client().keyboardState().group, 1);
    EXPECT_THAT(heardAfterPressing(one), ElementsAre(1));
}

TEST_F(X11HotKeyCenterTest, ALayoutThatLeavesTheModifiersWhereTheyAreChangesNothing)
{
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    setLayout({u"de"_s});
    remap({u"keycode 94 = x X"_s});
    EXPECT_EQ(timesGrabbedAnew(), 0);
    EXPECT_THAT(heardAfterPressing(one), ElementsAre(1));
}

TEST_F(X11HotKeyCenterTest, KeysAreGrabbedAnewWhenNumLockMoves)
{
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    remap({u"clear mod2"_s, u"add mod3 = Num_Lock"_s});
    EXPECT_GE(timesGrabbedAnew(), 1);
    client().lock(XCB_MOD_MASK_3, 0);
    EXPECT_THAT(heardAfterPressing(one), ElementsAre(1));
}

TEST_F(X11HotKeyCenterTest, KeysAreGrabbedAnewWhenAltMoves)
{
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    remap({u"clear mod1"_s, u"clear mod3"_s, u"add mod3 = Alt_L"_s});
    EXPECT_GE(timesGrabbedAnew(), 1);
    EXPECT_THAT(heardAfterPressing(one), ElementsAre(1));
    // What was held before is free.
    EXPECT_TRUE(client().grabKey(HotKeyDesktop::place(one), XCB_MOD_MASK_1 | XCB_MOD_MASK_SHIFT));
}

TEST_F(X11HotKeyCenterTest, AKeyThatCannotBeGrabbedAnewIsLostAloneAndComesBack)
{
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    ASSERT_EQ(add(two, 2), HotKeyCenter::done);
    ASSERT_TRUE(client().grabKey(HotKeyDesktop::place(one), XCB_MOD_MASK_3 | XCB_MOD_MASK_SHIFT));
    remap({u"clear mod1"_s, u"clear mod3"_s, u"add mod3 = Alt_L"_s});
    EXPECT_THAT(heardAfterPressing(one), IsEmpty());
    EXPECT_THAT(heardAfterPressing(two), ElementsAre(2));

    client().ungrabKey(HotKeyDesktop::place(one), XCB_MOD_MASK_3 | XCB_MOD_MASK_SHIFT);
    remap({u"clear mod3"_s, u"add mod1 = Alt_L"_s});
    EXPECT_THAT(heardAfterPressing(one), ElementsAre(1));
}

TEST_F(X11HotKeyCenterTest, AKeyThatIsHeldElsewhereWithALockOnlyIsRefusedAndNothingOfItIsKept)
{
    const auto withNumLock =
        static_cast<std::uint16_t>(HotKeyDesktop::serverModifiers(optionShift) | numLock);
    ASSERT_TRUE(client().grabKey(HotKeyDesktop::place(three), withNumLock));
    EXPECT_EQ(add(three, 1), HotKeyCenter::taken);
    m_desktop.settle();
    XClient third(m_desktop.session().display());
    EXPECT_TRUE(
        third.grabKey(HotKeyDesktop::place(three), HotKeyDesktop::serverModifiers(optionShift)));
}

TEST_F(X11HotKeyCenterTest, OfTenKeysOnlyThoseInUseElsewhereAreRefused)
{
    ASSERT_TRUE(m_desktop.takeElsewhere(digits[2], optionShift));
    ASSERT_TRUE(m_desktop.takeElsewhere(digits[9], optionShift));
    std::vector<quint32> refused;
    for (quint32 position = 1; position <= 10; ++position) {
        if (add(digits.at(position - 1), position) != HotKeyCenter::done) {
            refused.push_back(position);
        }
    }
    EXPECT_THAT(refused, ElementsAre(3, 10));
    EXPECT_THAT(heardAfterPressing(digits[8]), ElementsAre(9));
}

TEST_F(X11HotKeyCenterTest, AKeyThatIsHeldDownIsHeardOnce)
{
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    m_desktop.session().run(u"xset"_s, {u"r"_s, u"rate"_s, u"50"_s, u"100"_s});
    // Keys do repeat here: an ordinary one in an ordinary window.
    constexpr xcb_keycode_t letterA = 38;
    const auto window = client().show({.windowClass = XClient::windowClass("a", "A")});
    ASSERT_TRUE(waitUntil([&] { return client().focused() == window; }));
    client().pressOnKeyboard(letterA);
    EXPECT_TRUE(waitUntil([this] { return client().keys().size() > 10; }));
    client().releaseOnKeyboard(letterA);

    client().pressOnKeyboard(HotKeyDesktop::leftAlt);
    client().pressOnKeyboard(HotKeyDesktop::leftShift);
    client().pressOnKeyboard(HotKeyDesktop::place(one));
    const auto pressed = client().time();
    ASSERT_TRUE(waitUntil([&] { return client().time() - pressed > 300; }));
    EXPECT_THAT(heard(), ElementsAre(1));
    client().releaseOnKeyboard(HotKeyDesktop::place(one));
    m_desktop.tap(HotKeyDesktop::place(one));
    EXPECT_THAT(heard(), ElementsAre(1, 1));
}

TEST_F(X11HotKeyCenterTest, AKeyThatFollowsWhileAnotherIsStillDownIsHeard)
{
    ASSERT_EQ(add(one, 1), HotKeyCenter::done);
    ASSERT_EQ(add(two, 2), HotKeyCenter::done);
    client().pressOnKeyboard(HotKeyDesktop::leftAlt);
    client().pressOnKeyboard(HotKeyDesktop::leftShift);
    client().pressOnKeyboard(HotKeyDesktop::place(one));
    client().pressOnKeyboard(HotKeyDesktop::place(two));
    client().releaseOnKeyboard(HotKeyDesktop::place(two));
    client().releaseOnKeyboard(HotKeyDesktop::place(one));
    EXPECT_THAT(heard(), ElementsAre(1, 2));
}

TEST_F(X11HotKeyCenterTest, AServerThatAnotherClientHoldsHoldsNobodyUpHere)
{
    client().grabServer();
    // Nobody but this thread lets the server go.
    auto registration = center().registerKey(one, optionShift, {.id = 1});
    auto given = center().registerKey(two, optionShift, {.id = 2});
    EXPECT_EQ(center().unregisterKey(given.key), HotKeyCenter::done);
    client().ungrabServer();
    EXPECT_EQ(await(std::move(registration.status)), HotKeyCenter::done);
    EXPECT_THAT(heardAfterPressing(one), ElementsAre(1));
    EXPECT_THAT(heardAfterPressing(two), IsEmpty());
}

TEST_F(X11HotKeyCenterTest, AServerThatGoesAwayAnswersEveryQuestion)
{
    client().grabServer();
    auto registration = center().registerKey(one, optionShift, {.id = 1});
    m_desktop.session().killServer();
    EXPECT_EQ(await(std::move(registration.status)), HotKeyCenter::unavailable);
    EXPECT_EQ(add(two, 2), HotKeyCenter::unavailable);
}

TEST_F(X11HotKeyCenterTest, ItMayEndWhileAnotherClientHoldsTheServer)
{
    client().grabServer();
    auto registration = center().registerKey(one, optionShift, {.id = 1});
    m_desktop.endDesktop();
    EXPECT_EQ(await(std::move(registration.status)), HotKeyCenter::unavailable);
    client().ungrabServer();
}

} // namespace

} // namespace tessly::test
