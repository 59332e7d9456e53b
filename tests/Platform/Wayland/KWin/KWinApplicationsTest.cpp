#include "KWinSession.h"
#include "KWinUser.h"
#include "WaylandKeySender.h"
#include "WaylandKeysFixture.h"
#include "contract/KeyEventPosterContract.h"
#include "contract/WorkspaceContract.h"

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

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

class KWinKeysTest : public WaylandKeysTest<KWinApplications>
{
protected:
    KWinUser& user() { return applications().user(); }
    /// KWin passes the release of a key on that it has never seen before.
    void makeKeysKnown()
    {
        EXPECT_TRUE(send(PasteChord::controlV));
        Keys seen = keys();
        std::erase_if(seen, [](const Key& key) { return !key.isPress && key.modifiers == 0; });
        EXPECT_EQ(seen, controlV());
    }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(KWin, WorkspaceContract, KWinApplications);
INSTANTIATE_TYPED_TEST_SUITE_P(KWin, KeyEventPosterContract, KWinApplications);

TEST_F(KWinKeysTest, keysArePressedInOrder)
{
    EXPECT_TRUE(applications().sender().isAllowed());
    EXPECT_FALSE(applications().desktop().hasVirtualKeyboard());
    makeKeysKnown();
    expectAllChords();
}

TEST_F(KWinKeysTest, whatTheUserHoldsDownIsNoPartOfTheKeys)
{
    makeKeysKnown();
    user().press(KEY_LEFTALT);
    user().press(KEY_RIGHTSHIFT);
    ASSERT_THAT(keys(), ElementsAre(pressed(KEY_LEFTALT, 0), pressed(KEY_RIGHTSHIFT, alt)));
    Keys lifted = {released(KEY_RIGHTSHIFT, alt | shift), released(KEY_LEFTALT, alt)};
    if (user().isToldOfModifiers()) {
        // It is waited for, and nothing is pressed until then.
        auto ready = applications().sender().ready();
        EXPECT_FALSE(send(PasteChord::controlV));
        EXPECT_THAT(keys(), IsEmpty());
        user().release(KEY_RIGHTSHIFT);
        EXPECT_FALSE(send(PasteChord::controlV)) << "one is still held down";
        EXPECT_FALSE(ready.isReady());
        user().release(KEY_LEFTALT);
        EXPECT_TRUE(await(std::move(ready)));
        EXPECT_EQ(keys(), lifted);
        EXPECT_TRUE(send(PasteChord::controlV));
        EXPECT_EQ(keys(), controlV());
    } else {
        // It is lifted, and stays so.
        EXPECT_TRUE(send(PasteChord::controlV));
        const auto chord = controlV();
        lifted.insert(lifted.end(), chord.begin(), chord.end());
        EXPECT_EQ(keys(), lifted);
        user().release(KEY_RIGHTSHIFT);
        user().release(KEY_LEFTALT);
        EXPECT_THAT(keys(), IsEmpty());
    }
    user().type(KEY_A);
    EXPECT_THAT(keys(), ElementsAre(pressed(KEY_A, 0), released(KEY_A, 0)));
}

TEST_F(KWinKeysTest, theWindowBehindOneThatHasJustClosedGetsNoKeys)
{
    expectThatWhatIsBehindGetsNoKeys();
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
    EXPECT_EQ(paste(editor), PostResult::posted);
    EXPECT_EQ(applications().pastesSeenBy(u"Editor"_s), 1);
    EXPECT_EQ(applications().pastesSeenBy(u"Sketcher"_s), 0);
}

TEST_F(KWinKeysTest, theKeyOfTheLetterIsKnown)
{
    EXPECT_EQ(letter(), std::uint32_t{KEY_V});
}

} // namespace tessly::test
