#include "X11KeyEventPosterTest.h"

namespace tessly::test {
namespace {

TEST_F(X11KeyEventPosterTest, needsNoPermission)
{
    EXPECT_TRUE(poster().isAllowed());
    EXPECT_TRUE(poster().requestAccess());
}

TEST_F(X11KeyEventPosterTest, theTargetSeesExactlyControlV)
{
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV());
    EXPECT_TRUE(client().heldKeys().empty());
    EXPECT_EQ(offers(), 0);
}

TEST_F(X11KeyEventPosterTest, whenItReportsTheKeysAreThere)
{
    for (int count = 0; count < 20; ++count) {
        ASSERT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
        ASSERT_EQ(strokes(), controlV());
        client().forgetKeys();
    }
}

TEST_F(X11KeyEventPosterTest, pastesFollowOneAnother)
{
    auto& keys = poster();
    auto first = keys.postPaste(target(), WriteTicket(1));
    auto second = keys.postPaste(target(), WriteTicket(1));
    EXPECT_EQ(await(std::move(first)), PostResult::posted);
    EXPECT_EQ(await(std::move(second)), PostResult::posted);
    auto twice = controlV();
    twice.insert(twice.end(), twice.begin(), twice.begin() + 4);
    EXPECT_EQ(strokes(), twice);
}

TEST_F(X11KeyEventPosterTest, theKeysGoToTheWindowInsideTheTargetThatHasTheFocus)
{
    XClient::Look inner;
    inner.parent = window();
    const auto child = client().show(inner);
    client().focus(child);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV());
    EXPECT_EQ(client().keys().front().window, child);
}

// What is pasted.

TEST_F(X11KeyEventPosterTest, noKeyComesBeforeTheContent)
{
    Gate& writes = holdWrites();
    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    EXPECT_EQ(strokes(), Strokes());
    writes.open();
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
    EXPECT_EQ(strokes(), controlV());
}

TEST_F(X11KeyEventPosterTest, noKeyComesWithoutTheContent)
{
    refuseToWrite();
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, noKeyComesForWhatAnotherProgramHasCopiedSince)
{
    setOwner(window());
    client().own("CLIPBOARD", window());
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV());
    client().forgetKeys();
    client().own("CLIPBOARD");
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, noKeyComesForWhatTheProgramItselfOffersInItsPlace)
{
    replaceContent();
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, whatIsCopiedWhileTheUserHoldsKeysIsNotPasted)
{
    setOwner(window());
    client().own("CLIPBOARD", window());
    client().pressOnKeyboard(leftAlt);
    client().forgetKeys();
    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    client().own("CLIPBOARD");
    client().releaseOnKeyboard(leftAlt);
    EXPECT_EQ(await(std::move(task)), PostResult::contentReplaced);
    for (const Stroke& stroke : strokes()) {
        EXPECT_EQ(stroke.code, leftAlt);
    }
}

TEST_F(X11KeyEventPosterTest, mayGoBeforeTheContentComes)
{
    Gate& writes = holdWrites();
    auto task = poster().postPaste(target(), WriteTicket(1));
    endPoster();
    writes.open();
    EXPECT_EQ(await(std::move(task)), PostResult::failed);
    EXPECT_EQ(strokes(), Strokes());
}

// Terminals.

TEST_F(X11KeyEventPosterTest, aTerminalSeesControlShiftV)
{
    show("term", "Term");
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(
        strokes(), (Strokes{
                       pressed(leftControl, 0), pressed(leftShift, control),
                       pressed(usualV, control | shift), released(usualV, control | shift),
                       released(leftShift, control | shift), released(leftControl, control)}));
    EXPECT_TRUE(client().heldKeys().empty());
    EXPECT_EQ(offers(), 0);
}

TEST_F(X11KeyEventPosterTest, xtermSeesShiftInsertAndFindsThePrimarySelection)
{
    show("xterm", "XTerm");
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(offers(), 1);
    EXPECT_EQ(
        strokes(), (Strokes{
                       pressed(leftShift, 0), pressed(insertKey, shift), released(insertKey, shift),
                       released(leftShift, shift)}));
}

TEST_F(X11KeyEventPosterTest, withoutThePrimarySelectionXtermGetsNoKeys)
{
    show("xterm", "XTerm");
    refuseToOffer();
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::failed);
    EXPECT_EQ(offers(), 1);
    EXPECT_EQ(strokes(), Strokes());

    X11KeyEventPoster withoutClipboard(desktop().desktop(), {}, {});
    EXPECT_EQ(
        await(withoutClipboard.postPaste(target(), WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, doesNotTouchThePrimarySelectionForATargetThatIsNotInFront)
{
    show("xterm", "XTerm");
    const auto xterm = target();
    show("b", "B");
    EXPECT_EQ(await(poster().postPaste(xterm, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(offers(), 0);
}

TEST_F(X11KeyEventPosterTest, aKeyboardWithoutTheKeyCannotPaste)
{
    show("xterm", "XTerm");
    desktop().session().run(u"xmodmap"_s, {u"-e"_s, u"keycode 118 = NoSymbol"_s});
    client().forgetKeys();
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::failed);
    EXPECT_EQ(strokes(), Strokes());
    EXPECT_TRUE(client().heldKeys().empty());
}

// The wrong window.

TEST_F(X11KeyEventPosterTest, aTargetThatIsNotInFrontGetsNoKeysNorDoesAnyoneElse)
{
    const auto first = target();
    show("b", "B");
    EXPECT_EQ(await(poster().postPaste(first, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, anotherWindowOfTheTargetGetsNoKeys)
{
    const auto first = target();
    show("a", "A");
    EXPECT_EQ(await(poster().postPaste(first, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, noKeysAreSentWhenTheTargetLeavesTheFrontMeanwhile)
{
    client().pressOnKeyboard(leftAlt);
    client().sync();
    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    show("b", "B");
    client().releaseOnKeyboard(leftAlt);
    EXPECT_EQ(await(std::move(task)), PostResult::targetNotInFront);
    for (const auto& stroke : strokes()) {
        EXPECT_EQ(stroke.code, leftAlt);
    }
}

TEST_F(X11KeyEventPosterTest, noKeysAreSentWhenTheFocusIsElsewhereThoughTheManagerNamesTheTarget)
{
    XClient::Look unmanaged;
    unmanaged.isUnmanaged = true;
    const auto popup = client().show(unmanaged);
    // At once, before the news can have arrived.
    client().focus(popup);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(strokes(), Strokes());
}

TEST_F(X11KeyEventPosterTest, noKeysAreSentWhenTheTargetIsDestroyed)
{
    client().pressOnKeyboard(leftAlt);
    client().sync();
    auto task = poster().postPaste(target(), WriteTicket(1));
    client().destroy(window());
    EXPECT_EQ(await(std::move(task)), PostResult::targetNotInFront);
    client().releaseOnKeyboard(leftAlt);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::targetNotInFront);
}

TEST_F(X11KeyEventPosterTest, onlyWindowsOfThisDesktopAreTargets)
{
    const auto other = std::make_shared<FakeRunningApplication>(u"other"_s);
    other->setActive(true);
    EXPECT_EQ(await(poster().postPaste(other, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(await(poster().postPaste(nullptr, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(strokes(), Strokes());
}

// The server, and the end.

TEST_F(X11KeyEventPosterTest, failsWhenTheServerGoes)
{
    client().pressOnKeyboard(leftAlt);
    client().sync();
    auto& keys = poster();
    auto waiting = keys.postPaste(target(), WriteTicket(1));
    auto queued = keys.postPaste(target(), WriteTicket(1));
    desktop().session().killServer();
    EXPECT_EQ(await(std::move(waiting)), PostResult::failed);
    EXPECT_EQ(await(std::move(queued)), PostResult::failed);
    EXPECT_NE(await(keys.postPaste(target(), WriteTicket(1))), PostResult::posted);
}

TEST_F(X11KeyEventPosterTest, waitsForAServerThatServesSomeoneElseWithoutHoldingAnybody)
{
    client().grabServer();
    auto task = poster().postPaste(target(), WriteTicket(1));
    // The event loop runs on.
    bool hasRun = false;
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [&] { hasRun = true; }, Qt::QueuedConnection);
    EXPECT_TRUE(waitUntil([&] { return hasRun; }));
    EXPECT_FALSE(task.isReady());
    client().ungrabServer();
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
    EXPECT_EQ(strokes(), controlV());
}

TEST_F(X11KeyEventPosterTest, mayGoWhileAPasteIsUnderWay)
{
    client().pressOnKeyboard(leftAlt);
    client().sync();
    auto task = poster().postPaste(target(), WriteTicket(1));
    endPoster();
    letTimePass();
    client().releaseOnKeyboard(leftAlt);
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
}

TEST_F(X11KeyEventPosterTest, failsWhenTheDesktopEndsMeanwhile)
{
    client().pressOnKeyboard(leftAlt);
    client().sync();
    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    endPoster();
    desktop().endDesktop();
    EXPECT_EQ(await(std::move(task)), PostResult::failed);
}

} // namespace
} // namespace tessly::test
