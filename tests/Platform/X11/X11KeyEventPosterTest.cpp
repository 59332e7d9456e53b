#include "X11KeyEventPoster.h"

#include "FakeRunningApplication.h"
#include "Gate.h"
#include "TestDesktop.h"

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly::test {
namespace {

constexpr xcb_keycode_t leftControl = 37;
constexpr xcb_keycode_t leftShift = 50;
constexpr xcb_keycode_t leftAlt = 64;
constexpr xcb_keycode_t digit3 = 12;
constexpr xcb_keycode_t usualV = 55;
constexpr xcb_keycode_t dvorakV = 60;
constexpr xcb_keycode_t insertKey = 118;

constexpr std::uint16_t shift = XCB_MOD_MASK_SHIFT;
constexpr std::uint16_t capsLock = XCB_MOD_MASK_LOCK;
constexpr std::uint16_t control = XCB_MOD_MASK_CONTROL;
constexpr std::uint16_t alt = XCB_MOD_MASK_1;
constexpr std::uint16_t numLock = XCB_MOD_MASK_2;

/// How key events show the second layout.
constexpr std::uint16_t secondGroup = 1 << 13;

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

Stroke pressed(xcb_keycode_t key, int state)
{
    return {.isPress = true, .code = key, .state = static_cast<std::uint16_t>(state)};
}

Stroke released(xcb_keycode_t key, int state)
{
    return {.isPress = false, .code = key, .state = static_cast<std::uint16_t>(state)};
}

/// Ctrl+V, with what else is in the state of the events throughout.
Strokes controlV(xcb_keycode_t key = usualV, int state = 0)
{
    return {
        pressed(leftControl, state), pressed(key, state | control), released(key, state | control),
        released(leftControl, state | control)};
}

/// A target that notes its keys, in front.
class X11KeyEventPosterTest : public testing::Test
{
protected:
    static constexpr auto patient = 20'000ms;
    static constexpr auto impatient = 30ms;

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

    X11KeyEventPoster& poster(std::chrono::milliseconds releaseWait = patient)
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

// Held keys.

TEST_F(X11KeyEventPosterTest, waitsUntilTheUserLetsGo)
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

TEST_F(X11KeyEventPosterTest, liftsWhatTheUserDoesNotLetGoOf)
{
    client().pressOnKeyboard(leftAlt);
    client().pressOnKeyboard(leftShift);
    client().sync();
    client().forgetKeys();
    EXPECT_EQ(await(poster(impatient).postPaste(target(), WriteTicket(1))), PostResult::posted);

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

TEST_F(X11KeyEventPosterTest, liftsKeysThatOtherProgramsHold)
{
    desktop().session().run(u"xdotool"_s, {u"keydown"_s, u"alt"_s, u"keydown"_s, u"shift"_s});
    client().sync();
    client().forgetKeys();
    EXPECT_EQ(await(poster(impatient).postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_EQ(seen.size(), 6U);
    EXPECT_EQ(Strokes(seen.begin() + 2, seen.end()), controlV());
    EXPECT_TRUE(client().heldKeys().empty());
}

TEST_F(X11KeyEventPosterTest, aHeldHotKeyDoesNotSwallowTheKeys)
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

TEST_F(X11KeyEventPosterTest, aHotKeyThatIsHeldForEverDoesNotSwallowTheKeys)
{
    XClient other(desktop().session().display());
    other.grabKey(digit3);
    client().pressOnKeyboard(leftAlt);
    client().pressOnKeyboard(leftShift);
    client().pressOnKeyboard(digit3);
    EXPECT_EQ(await(poster(impatient).postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_GE(seen.size(), 4U);
    EXPECT_EQ(Strokes(seen.end() - 4, seen.end()), controlV());
    for (const auto& key : other.keys()) {
        EXPECT_NE(key.code, usualV);
    }
    EXPECT_TRUE(client().heldKeys().empty());
}

TEST_F(X11KeyEventPosterTest, whoeverHasGrabbedTheKeyboardGetsNoKeys)
{
    XClient other(desktop().session().display());
    other.grabKeyboard();
    EXPECT_EQ(
        await(poster(impatient).postPaste(target(), WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_TRUE(other.keys().empty());
    EXPECT_EQ(strokes(), Strokes());

    auto task = poster().postPaste(target(), WriteTicket(1));
    letTimePass();
    other.ungrabKeyboard();
    EXPECT_EQ(await(std::move(task)), PostResult::posted);
    EXPECT_TRUE(other.keys().empty());
    EXPECT_EQ(strokes(), controlV());
}

// Locks and latches.

TEST_F(X11KeyEventPosterTest, locksDoNotMatterAndStay)
{
    client().lock(capsLock | numLock, 0);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV(usualV, capsLock | numLock));
    EXPECT_EQ(client().keyboardState().lockedMods, capsLock | numLock);
}

TEST_F(X11KeyEventPosterTest, lockedModifiersAreTakenOffForTheTimeOfThePaste)
{
    client().lock(alt | shift | numLock, 0);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    const auto seen = strokes();
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[1], pressed(usualV, control | numLock));
    EXPECT_EQ(seen[2], released(usualV, control | numLock));
    EXPECT_EQ(client().keyboardState().lockedMods, alt | shift | numLock);
}

TEST_F(X11KeyEventPosterTest, latchedModifiersDoNotJoinIn)
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

TEST_F(X11KeyEventPosterTest, findsTheLetterOnEveryLayout)
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

TEST_F(X11KeyEventPosterTest, withoutTheLetterOnAnyLayoutTheTargetSeesShiftInsert)
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

TEST_F(X11KeyEventPosterTest, pastesByTheLayoutThatHasTheLetterAndLeavesTheUsersActive)
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

TEST_F(X11KeyEventPosterTest, staysInTheLayoutThatHasTheLetter)
{
    setLayout({u"ru,us"_s, u"-variant"_s, u",dvorak"_s});
    client().lock(0, 1);
    EXPECT_EQ(await(poster().postPaste(target(), WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(strokes(), controlV(dvorakV, secondGroup));
    EXPECT_EQ(client().keyboardState().lockedGroup, 1);
}

TEST_F(X11KeyEventPosterTest, modifiersThatSwitchLayoutsLeaveTheUsersActive)
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

TEST_F(X11KeyEventPosterTest, theLayoutOfTheUsersKeyboardMayBeAnotherThanThatOfTestKeys)
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
