#include "KWinSession.h"
#include "KWinUser.h"
#include "WaylandKeyApplications.h"
#include "WaylandKeySender.h"
#include "contract/KeyEventPosterContract.h"
#include "contract/WorkspaceContract.h"

#include <gmock/gmock.h>

#include <linux/input-event-codes.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

constexpr std::uint32_t shift = 1;
constexpr std::uint32_t control = 4;
constexpr std::uint32_t alt = 8;

using Key = WaylandWindows::Key;

class KWinApplications final : public WaylandKeyApplications
{
public:
    KWinApplications()
        : WaylandKeyApplications(KWinSession::shared().display(), [](WaylandDesktop& desktop) {
            return std::make_unique<FakeInputSender>(desktop);
        })
    {
    }

    KWinUser& user() { return m_user; }
    void bringToFront(const QString& id) { m_user.bringToFront(id.toUtf8()); }

private:
    KWinUser m_user{KWinSession::shared().display()};
};

class KWinKeysTest : public testing::Test
{
protected:
    KWinKeysTest()
    {
        windows().show("Editor");
        inFront(u"Editor"_s);
        EXPECT_TRUE(waitUntil([this] { return windows().focus() == "Editor"; }));
        windows().forgetKeys();
    }

    KWinApplications& applications() { return m_applications; }
    WaylandWindows& windows() { return m_applications.windows(); }
    KWinUser& user() { return m_applications.user(); }
    [[nodiscard]] bool send(PasteChord chord) { return await(m_applications.sender().send(chord)); }
    void inFront(const QString& id)
    {
        EXPECT_TRUE(waitUntil([&] {
            const auto front = applications().workspace().frontmostApplication();
            return front && front->bundleIdentifier() == id;
        })) << id.toStdString();
    }
    /// What came since the last time, or the start.
    std::vector<Key> keys()
    {
        auto seen = windows().keys();
        windows().forgetKeys();
        return seen;
    }
    static Key pressed(std::uint32_t code, std::uint32_t modifiers)
    {
        return {"Editor", code, true, modifiers, 0};
    }
    static Key released(std::uint32_t code, std::uint32_t modifiers)
    {
        return {"Editor", code, false, modifiers, 0};
    }
    static std::vector<Key> controlV()
    {
        return {
            pressed(KEY_LEFTCTRL, 0), pressed(KEY_V, control), released(KEY_V, control),
            released(KEY_LEFTCTRL, control)};
    }

private:
    KWinApplications m_applications;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(KWin, WorkspaceContract, KWinApplications);
INSTANTIATE_TYPED_TEST_SUITE_P(KWin, KeyEventPosterContract, KWinApplications);

TEST_F(KWinKeysTest, keysArePressedInOrderAndNothingElseIsSeen)
{
    EXPECT_TRUE(applications().sender().isAllowed());
    EXPECT_FALSE(applications().desktop().hasVirtualKeyboard());
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV());
    EXPECT_TRUE(send(PasteChord::controlShiftV));
    EXPECT_THAT(
        keys(), ElementsAre(
                    pressed(KEY_LEFTCTRL, 0), pressed(KEY_LEFTSHIFT, control),
                    pressed(KEY_V, control | shift), released(KEY_V, control | shift),
                    released(KEY_LEFTSHIFT, control | shift), released(KEY_LEFTCTRL, control)));
    EXPECT_TRUE(send(PasteChord::shiftInsert));
    EXPECT_THAT(
        keys(), ElementsAre(
                    pressed(KEY_LEFTSHIFT, 0), pressed(KEY_INSERT, shift),
                    released(KEY_INSERT, shift), released(KEY_LEFTSHIFT, shift)));
}

TEST_F(KWinKeysTest, whatTheUserHoldsDownIsLiftedAndStaysSo)
{
    user().press(KEY_LEFTALT);
    user().press(KEY_RIGHTSHIFT);
    ASSERT_THAT(keys(), ElementsAre(pressed(KEY_LEFTALT, 0), pressed(KEY_RIGHTSHIFT, alt)));
    EXPECT_TRUE(send(PasteChord::controlV));
    std::vector<Key> expected = {released(KEY_RIGHTSHIFT, alt | shift), released(KEY_LEFTALT, alt)};
    const auto chord = controlV();
    expected.insert(expected.end(), chord.begin(), chord.end());
    EXPECT_EQ(keys(), expected);

    user().release(KEY_RIGHTSHIFT);
    user().release(KEY_LEFTALT);
    EXPECT_THAT(keys(), IsEmpty());
    user().type(KEY_A);
    EXPECT_THAT(keys(), ElementsAre(pressed(KEY_A, 0), released(KEY_A, 0)));
}

TEST_F(KWinKeysTest, theKeyOfTheLetterIsKnown)
{
    EXPECT_EQ(applications().desktop().letterVKey(), std::uint32_t{KEY_V});
}

} // namespace tessly::test
