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
    }

    KWinApplications& applications() { return m_applications; }
    WaylandWindows& windows() { return m_applications.windows(); }
    KWinUser& user() { return m_applications.user(); }
    [[nodiscard]] bool send(PasteChord chord) { return await(m_applications.sender().send(chord)); }
    std::shared_ptr<RunningApplication> inFront(const QString& id)
    {
        std::shared_ptr<RunningApplication> front;
        EXPECT_TRUE(waitUntil([&] {
            front = applications().workspace().frontmostApplication();
            return front && front->bundleIdentifier() == id;
        })) << id.toStdString();
        return front;
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

TEST_F(KWinKeysTest, keysArePressedInOrder)
{
    EXPECT_TRUE(applications().sender().isAllowed());
    EXPECT_FALSE(applications().desktop().hasVirtualKeyboard());
    EXPECT_TRUE(send(PasteChord::controlV));
    // KWin passes the release of a key on that it has never seen before.
    auto seen = keys();
    std::erase_if(seen, [](const Key& key) { return !key.isPress && key.modifiers == 0; });
    EXPECT_EQ(seen, controlV());
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV()) << "from then on nothing else is seen";
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
    ASSERT_TRUE(send(PasteChord::controlV));
    windows().forgetKeys();
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

TEST_F(KWinKeysTest, theWindowBehindOneThatHasJustClosedGetsNoKeys)
{
    for (int count = 0; count < 10; ++count) {
        windows().show("Sketcher");
        const auto sketcher = inFront(u"Sketcher"_s);
        windows().close("Sketcher");
        // The news of that may not have come yet.
        EXPECT_EQ(await(applications().poster().postPaste(sketcher)), PostResult::targetNotInFront);
        EXPECT_THAT(keys(), IsEmpty());
        inFront(u"Editor"_s);
    }
}

TEST_F(KWinKeysTest, windowsMayChangeWhatTheyAre)
{
    const auto editor = inFront(u"Editor"_s);
    windows().rename("Editor", "org.example.Other");
    EXPECT_TRUE(waitUntil([&] { return editor->bundleIdentifier() == u"org.example.Other"_s; }));
    EXPECT_TRUE(editor->isActive());
}

TEST_F(KWinKeysTest, windowsComeToTheFrontFromTheTaskBarAndFromOtherVirtualDesktops)
{
    const auto editor = inFront(u"Editor"_s);
    user().minimize("Editor");
    ASSERT_TRUE(waitUntil([&] { return !editor->isActive(); }));
    EXPECT_FALSE(editor->isTerminated());
    editor->activate();
    EXPECT_TRUE(waitUntil([&] { return editor->isActive(); }));

    windows().show("Sketcher");
    const auto sketcher = inFront(u"Sketcher"_s);
    user().moveToNewVirtualDesktop("Editor");
    EXPECT_TRUE(sketcher->isActive());
    editor->activate();
    EXPECT_TRUE(waitUntil([&] { return editor->isActive(); }));
    EXPECT_FALSE(sketcher->isActive());
    EXPECT_EQ(await(applications().poster().postPaste(editor)), PostResult::posted);
    EXPECT_EQ(applications().pastesSeenBy(u"Editor"_s), 1);
    EXPECT_EQ(applications().pastesSeenBy(u"Sketcher"_s), 0);
}

TEST_F(KWinKeysTest, theKeyOfTheLetterIsKnown)
{
    EXPECT_EQ(applications().desktop().letterVKey(), std::uint32_t{KEY_V});
}

} // namespace tessly::test
