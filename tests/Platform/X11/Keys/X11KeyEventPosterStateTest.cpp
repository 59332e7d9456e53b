#include "X11KeyEventPosterTest.h"

#include <array>
#include <future>

namespace tessly::test {
namespace {

using X11KeyEventPosterStateTest = X11KeyEventPosterTest;

// Held keys.

TEST_F(X11KeyEventPosterStateTest, waitsUntilTheUserLetsGo)
{
    client().pressOnKeyboard(leftAlt);
    client().pressOnKeyboard(leftShift);
    client().sync();
    client().forgetKeys();
    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    EXPECT_EQ(strokes(), Strokes());
    client().releaseOnKeyboard(leftAlt);
    letTimePass();
    EXPECT_EQ(strokes(), Strokes({released(leftAlt, alt | shift)}));
    client().releaseOnKeyboard(leftShift);
    EXPECT_EQ(await(std::move(task)), PostResult::posted);

    Strokes expected = {released(leftAlt, alt | shift), released(leftShift, shift)};
    const auto chord = controlV();
    expected.insert(expected.end(), chord.begin(), chord.end());
    EXPECT_EQ(strokes(), expected);
    EXPECT_TRUE(client().heldKeys().empty());
}

TEST_F(X11KeyEventPosterStateTest, liftsWhatTheUserDoesNotLetGoOf)
{
    client().pressOnKeyboard(leftAlt);
    client().pressOnKeyboard(leftShift);
    client().sync();
    client().forgetKeys();
    EXPECT_EQ(await(poster(shortTimeout).postPaste(target(), WriteTicket(1))), PostResult::posted);

    Strokes expected = {released(leftShift, alt | shift), released(leftAlt, alt)};
    const auto chord = controlV();
    expected.insert(expected.end(), chord.begin(), chord.end());
    EXPECT_EQ(strokes(), expected);
    // Not pressed again: the user may have let go meanwhile, and nobody would release them then.
    EXPECT_TRUE(client().heldKeys().empty());

    client().forgetKeys();
    client().releaseOnKeyboard(leftAlt);
    client().releaseOnKeyboard(leftShift);
    EXPECT_EQ(strokes(), Strokes());
    client().pressOnKeyboard(usualV);
    client().releaseOnKeyboard(usualV);
    EXPECT_EQ(strokes(), (Strokes{pressed(usualV, 0), released(usualV, 0)}));
}

TEST_F(X11KeyEventPosterStateTest, liftsKeysThatOtherProgramsHold)
{
    desktop().session().run(u"xdotool"_s, {u"keydown"_s, u"alt"_s, u"keydown"_s, u"shift"_s});
    client().sync();
    client().forgetKeys();
    EXPECT_EQ(await(poster(shortTimeout).postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_EQ(seen.size(), 6U);
    EXPECT_EQ(Strokes(seen.begin() + 2, seen.end()), controlV());
    EXPECT_TRUE(client().heldKeys().empty());
}

TEST_F(X11KeyEventPosterStateTest, aHeldHotKeyDoesNotSwallowTheKeys)
{
    XClient other(desktop().session().display());
    other.grabKey(digit3);
    client().pressOnKeyboard(leftAlt);
    client().pressOnKeyboard(leftShift);
    client().pressOnKeyboard(digit3);
    auto task = poster().postPaste(target(), WriteTicket(1));
    // The modifiers go first, the key is still held.
    client().releaseOnKeyboard(leftAlt);
    client().releaseOnKeyboard(leftShift);
    letTimePass();
    client().releaseOnKeyboard(digit3);
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
    const auto seen = strokes();
    ASSERT_GE(seen.size(), 4U);
    EXPECT_EQ(Strokes(seen.end() - 4, seen.end()), controlV());
    for (const auto& key : other.keys()) {
        EXPECT_NE(key.code, usualV);
        EXPECT_NE(key.code, leftControl);
    }
}

TEST_F(X11KeyEventPosterStateTest, aHotKeyThatIsHeldForEverDoesNotSwallowTheKeys)
{
    XClient other(desktop().session().display());
    other.grabKey(digit3);
    client().pressOnKeyboard(leftAlt);
    client().pressOnKeyboard(leftShift);
    client().pressOnKeyboard(digit3);
    EXPECT_EQ(await(poster(shortTimeout).postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_GE(seen.size(), 4U);
    EXPECT_EQ(Strokes(seen.end() - 4, seen.end()), controlV());
    for (const auto& key : other.keys()) {
        EXPECT_NE(key.code, usualV);
    }
    EXPECT_TRUE(client().heldKeys().empty());
}

TEST_F(X11KeyEventPosterStateTest, whoeverHasGrabbedTheKeyboardGetsNoKeys)
{
    XClient other(desktop().session().display());
    other.grabKeyboard();
    EXPECT_EQ(
        await(poster(shortTimeout).postPaste(target(), WriteTicket(1))),
        PostResult::targetNotInFront);
    EXPECT_TRUE(other.keys().empty());
    EXPECT_EQ(strokes(), Strokes());

    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    other.ungrabKeyboard();
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
    EXPECT_TRUE(other.keys().empty());
    EXPECT_EQ(strokes(), controlV());
}

class X11KeyEventPosterGrabTest : public X11KeyEventPosterTest
{
protected:
    /// Begins a paste just after another program has grabbed the keyboard.
    QCoro::Task<PostResult> pasteAsGrabBegins(std::chrono::milliseconds releaseWait)
    {
        // What has been asked for while the first job runs is done before any event is looked at.
        post(m_jobs[0]);
        m_jobs[0].begun.get_future().wait();
        post(m_jobs[1]);
        auto task = poster(releaseWait).postPaste(target(), WriteTicket(1));
        m_jobs[0].end.set_value();
        m_jobs[1].begun.get_future().wait();
        m_other.grabKeyboard();
        m_jobs[1].end.set_value();
        return task;
    }

    XClient m_other{desktop().session().display()};

private:
    struct Job
    {
        std::promise<void> begun;
        std::promise<void> end;
    };

    void post(Job& job)
    {
        desktop().desktop().postToKeyGrabs([&job](X11KeyGrabs&) {
            job.begun.set_value();
            job.end.get_future().wait();
        });
    }

    std::array<Job, 2> m_jobs;
};

TEST_F(X11KeyEventPosterGrabTest, oneThatBeganThisMomentIsKnownToo)
{
    EXPECT_EQ(await(pasteAsGrabBegins(shortTimeout)), PostResult::targetNotInFront);
    EXPECT_TRUE(m_other.keys().empty());
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterGrabTest, oneThatBeganThisMomentIsWaitedFor)
{
    auto task = pasteAsGrabBegins(longTimeout);
    letTimePass();
    EXPECT_EQ(strokes(), Strokes());
    m_other.ungrabKeyboard();
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
    EXPECT_TRUE(m_other.keys().empty());
    EXPECT_EQ(strokes(), controlV());
}

// Locks and latches.

TEST_F(X11KeyEventPosterStateTest, locksDoNotMatterAndStay)
{
    client().lock(capsLock | numLock, 0);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV(usualV, capsLock | numLock));
    EXPECT_EQ(client().keyboardState().lockedMods, capsLock | numLock);
}

TEST_F(X11KeyEventPosterStateTest, lockedModifiersAreTakenOffForTheTimeOfThePaste)
{
    client().lock(alt | shift | numLock, 0);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[1], pressed(usualV, control | numLock));
    EXPECT_EQ(seen[2], released(usualV, control | numLock));
    EXPECT_EQ(client().keyboardState().lockedMods, alt | shift | numLock);
}

TEST_F(X11KeyEventPosterStateTest, latchedModifiersDoNotJoinIn)
{
    client().latch(shift);
    ASSERT_EQ(client().keyboardState().latchedMods, shift);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[1], pressed(usualV, control));
    EXPECT_EQ(client().keyboardState().mods, 0);
}

// Layouts.

TEST_F(X11KeyEventPosterStateTest, findsTheLetterOnEveryLayout)
{
    struct Case
    {
        QStringList layout;
        xcb_keycode_t key;
    };
    const std::vector<Case> cases = {
        {{u"de"_s}, usualV},
        {{u"fr"_s}, usualV},
        {{u"us(dvorak)"_s}, dvorakV},
    };
    for (const auto& [layout, key] : cases) {
        setLayout(layout);
        EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
        EXPECT_EQ(strokes(), controlV(key)) << layout.join(u' ').toStdString();
        EXPECT_TRUE(client().heldKeys().empty());
    }
}

TEST_F(X11KeyEventPosterStateTest, withoutTheLetterOnAnyLayoutTheTargetSeesShiftInsert)
{
    int offersBefore = 0;
    for (const QStringList& layout : {QStringList{u"ru"_s}, QStringList{u"gr,ru"_s}}) {
        setLayout(layout);
        EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
        EXPECT_EQ(
            strokes(), (Strokes{
                           pressed(leftShift, 0), pressed(insertKey, shift),
                           released(insertKey, shift), released(leftShift, shift)}))
            << layout.join(u' ').toStdString();
        EXPECT_EQ(offers(), ++offersBefore) << "for those that paste the primary selection by it";
        EXPECT_TRUE(client().heldKeys().empty());
        client().forgetKeys();
    }
    refuseToOffer();
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::failed);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterStateTest, pastesByTheLayoutThatHasTheLetterAndLeavesTheUsersActive)
{
    setLayout({u"us,ru"_s});
    client().lock(0, 1);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(
        strokes(), (Strokes{
                       pressed(leftControl, secondGroup), pressed(usualV, control),
                       released(usualV, control), released(leftControl, control)}));
    EXPECT_EQ(client().keyboardState().group, 1);
    EXPECT_EQ(client().keyboardState().lockedGroup, 1);
}

TEST_F(X11KeyEventPosterStateTest, staysInTheLayoutThatHasTheLetter)
{
    setLayout({u"ru,us"_s, u"-variant"_s, u",dvorak"_s});
    client().lock(0, 1);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV(dvorakV, secondGroup));
    EXPECT_EQ(client().keyboardState().lockedGroup, 1);
}

TEST_F(X11KeyEventPosterStateTest, modifiersThatSwitchLayoutsLeaveTheUsersActive)
{
    setLayout({u"us,ru"_s, u"-option"_s, u"grp:ctrl_shift_toggle"_s});
    show("term", "Term");
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(client().keyboardState().group, 0);
    EXPECT_EQ(client().keyboardState().lockedMods, 0);
    const auto seen = strokes();
    EXPECT_EQ(std::ranges::count(seen, pressed(usualV, control | shift)), 1)
        << testing::PrintToString(seen);
    EXPECT_TRUE(client().heldKeys().empty());
}

TEST_F(X11KeyEventPosterStateTest, theLayoutOfTheUsersKeyboardMayBeAnotherThanThatOfTestKeys)
{
    // Typing on a keyboard makes its layout the one of the moment.
    const auto id = desktop()
                        .session()
                        .run(u"xinput"_s, {u"list"_s, u"--id-only"_s, u"Xvfb keyboard"_s})
                        .trimmed();
    desktop().session().run(
        u"setxkbmap"_s, {u"-device"_s, QString::fromLatin1(id), u"us(dvorak)"_s});
    client().pressOnKeyboard(digit3);
    client().releaseOnKeyboard(digit3);
    client().sync();
    client().forgetKeys();
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV(usualV)) << "where the layout of test keys has the letter";
}

} // namespace
} // namespace tessly::test
