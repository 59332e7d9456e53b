#include "PasteTarget.h"
#include "SwaySession.h"
#include "WaylandKeyApplications.h"
#include "WaylandKeySender.h"
#include "WaylandPasteboard.h"
#include "WaylandTypist.h"
#include "contract/KeyEventPosterContract.h"

#include <gmock/gmock.h>

#include <QFile>

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

class SwayKeyApplications final : public WaylandKeyApplications
{
public:
    SwayKeyApplications()
        : WaylandKeyApplications(SwaySession::shared().display(), [](WaylandDesktop& desktop) {
            return std::make_unique<VirtualKeyboardSender>(desktop);
        })
    {
    }

    void bringToFront(const QString& id)
    {
        EXPECT_TRUE(
            SwaySession::shared().output(u"swaymsg"_s, {u"[app_id=\"%1\"] focus"_s.arg(id)}));
    }
};

class SwayKeysTest : public testing::Test
{
protected:
    SwayKeysTest()
    {
        windows().show("Editor");
        inFront(u"Editor"_s);
        EXPECT_TRUE(waitUntil([this] { return windows().focus() == "Editor"; }));
        windows().forgetKeys();
    }

    std::shared_ptr<PasteTarget> inFront(const QString& id)
    {
        std::shared_ptr<PasteTarget> front;
        EXPECT_TRUE(waitUntil([&] {
            front = std::dynamic_pointer_cast<PasteTarget>(
                applications().workspace().frontmostApplication());
            return front && front->bundleIdentifier() == id;
        })) << id.toStdString();
        return front;
    }

    SwayKeyApplications& applications() { return m_applications; }
    WaylandWindows& windows() { return m_applications.windows(); }
    [[nodiscard]] bool send(PasteChord chord) { return await(m_applications.sender().send(chord)); }
    /// What came since the last time, or the start.
    std::vector<Key> keys()
    {
        auto seen = windows().keys();
        windows().forgetKeys();
        return seen;
    }
    static Key pressed(std::uint32_t code, std::uint32_t modifiers, std::uint32_t group = 0)
    {
        return {"Editor", code, true, modifiers, group};
    }
    static Key released(std::uint32_t code, std::uint32_t modifiers, std::uint32_t group = 0)
    {
        return {"Editor", code, false, modifiers, group};
    }
    static std::vector<Key> controlV(std::uint32_t code = KEY_V, std::uint32_t group = 0)
    {
        return {
            pressed(KEY_LEFTCTRL, 0, group), pressed(code, control, group),
            released(code, control, group), released(KEY_LEFTCTRL, control, group)};
    }

private:
    SwayKeyApplications m_applications;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Sway, KeyEventPosterContract, SwayKeyApplications);

TEST_F(SwayKeysTest, keysArePressedInOrderAndNothingStaysDown)
{
    EXPECT_TRUE(applications().sender().isAllowed());
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
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV()) << "as the first time";
}

TEST_F(SwayKeysTest, whatTheUserHoldsDownHasNoPartInIt)
{
    WaylandTypist user(SwaySession::shared().display(), "us");
    user.press(KEY_LEFTALT);
    user.press(KEY_LEFTSHIFT);
    ASSERT_THAT(keys(), ElementsAre(pressed(KEY_LEFTALT, 0), pressed(KEY_LEFTSHIFT, alt)));
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV());
    user.release(KEY_LEFTSHIFT);
    user.release(KEY_LEFTALT);
    windows().forgetKeys();
    user.type(KEY_A);
    EXPECT_THAT(keys(), ElementsAre(pressed(KEY_A, 0), released(KEY_A, 0)));
}

TEST_F(SwayKeysTest, theUsersLayoutIsUsedWhereItHasTheLetter)
{
    WaylandTypist user(SwaySession::shared().display(), "us", "dvorak");
    const auto hasKey = [this](std::uint32_t key) {
        return waitUntil([this, key] { return applications().desktop().letterVKey() == key; });
    };
    user.type(KEY_A);
    const std::string dvorak = windows().keymap();
    ASSERT_TRUE(hasKey(KEY_DOT));
    windows().forgetKeys();
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV(KEY_DOT));
    EXPECT_EQ(windows().keymap(), dvorak);
    EXPECT_TRUE(hasKey(KEY_DOT)) << "what comes back is no change";

    user.setLayout("ru,us");
    user.type(KEY_A);
    ASSERT_TRUE(hasKey(KEY_V));
    windows().forgetKeys();
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV(KEY_V, 1));
    user.type(KEY_A);
    EXPECT_THAT(keys(), ElementsAre(pressed(KEY_A, 0, 0), released(KEY_A, 0, 0)));
}

TEST_F(SwayKeysTest, withoutTheLetterInTheUsersLayoutAnAmericanOneIsUsed)
{
    WaylandTypist user(SwaySession::shared().display(), "us", "dvorak");
    user.type(KEY_A);
    ASSERT_TRUE(waitUntil([this] { return applications().desktop().letterVKey() == KEY_DOT; }));
    user.setLayout("ru");
    user.type(KEY_A);
    const std::string russian = windows().keymap();
    ASSERT_TRUE(waitUntil([this] { return applications().desktop().letterVKey() == KEY_V; }));
    windows().forgetKeys();
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_EQ(keys(), controlV());
    EXPECT_NE(windows().keymap(), russian);
    user.type(KEY_A);
    windows().settle();
    EXPECT_EQ(windows().keymap(), russian) << "the user's keyboard is as before";
}

TEST_F(SwayKeysTest, theFocusStaysWhileKeysArePressed)
{
    const auto editor = inFront(u"Editor"_s);
    for (int count = 0; count < 20; ++count) {
        EXPECT_TRUE(send(PasteChord::controlV));
        EXPECT_TRUE(editor->isActive());
    }
    EXPECT_EQ(windows().focus(), "Editor");
    EXPECT_EQ(keys().size(), 20U * 4U);
}

TEST_F(SwayKeysTest, theWindowBehindOneThatHasJustClosedGetsNoKeys)
{
    for (int count = 0; count < 20; ++count) {
        windows().show("Sketcher");
        const auto sketcher = inFront(u"Sketcher"_s);
        windows().close("Sketcher");
        // The news of that may not have come yet.
        EXPECT_EQ(await(applications().poster().postPaste(sketcher)), PostResult::targetNotInFront);
        EXPECT_THAT(keys(), IsEmpty());
        inFront(u"Editor"_s);
    }
}

TEST_F(SwayKeysTest, withoutAWindowNobodySeesTheKeys)
{
    windows().close("Editor");
    ASSERT_TRUE(waitUntil([this] { return !applications().workspace().frontmostApplication(); }));
    EXPECT_TRUE(send(PasteChord::controlV));
    EXPECT_THAT(keys(), IsEmpty());
}

TEST_F(SwayKeysTest, aTerminalPastesWhatIsOnTheClipboard)
{
    const auto& session = SwaySession::shared();
    WaylandPasteboard pasteboard({.display = session.display(), .deadlines = {}});
    QTemporaryDir folder;
    const QString heard = folder.filePath(u"heard"_s);
    const auto terminal = session.start(
        u"foot"_s, {u"--app-id"_s, u"foot"_s, u"sh"_s, u"-c"_s,
                    u"echo ready > '%1'; cat >> '%1'"_s.arg(heard)});
    const auto hears = [&heard](const QByteArray& text) {
        return waitUntil([&] {
            QFile file(heard);
            return file.open(QIODevice::ReadOnly) && file.readAll() == text;
        });
    };
    ASSERT_TRUE(hears("ready\n"));
    const auto target = inFront(u"foot"_s);
    EXPECT_EQ(target->pasteChord(), PasteChord::controlShiftV);
    ASSERT_TRUE(pasteboard.write({{.plainText = "pasted text\n"}}));
    ASSERT_TRUE(await(pasteboard.hasWritten()));
    EXPECT_TRUE(send(target->pasteChord()));
    EXPECT_TRUE(hears("ready\npasted text\n"));
    terminal->kill();
    EXPECT_TRUE(terminal->waitForFinished());
    EXPECT_TRUE(waitUntil([&] { return target->isTerminated(); }));
}

} // namespace tessly::test
