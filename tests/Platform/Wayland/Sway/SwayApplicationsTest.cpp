#include "SwaySession.h"
#include "WaylandKeySender.h"
#include "WaylandKeysFixture.h"
#include "WaylandPasteboard.h"
#include "WaylandTypist.h"
#include "contract/KeyEventPosterContract.h"
#include "contract/WorkspaceContract.h"

#include <QFile>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

class SwayApplications final : public WaylandKeyApplications
{
public:
    SwayApplications()
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

using SwayKeysTest = WaylandKeysTest<SwayApplications>;

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Sway, WorkspaceContract, SwayApplications);
INSTANTIATE_TYPED_TEST_SUITE_P(Sway, KeyEventPosterContract, SwayApplications);

TEST_F(SwayKeysTest, keysArePressedInOrderAndNothingStaysDown)
{
    EXPECT_TRUE(applications().sender().isAllowed());
    expectAllChords();
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
        return waitUntil([this, key] { return letter() == key; });
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
    ASSERT_TRUE(waitUntil([this] { return letter() == KEY_DOT; }));
    user.setLayout("ru");
    user.type(KEY_A);
    const std::string russian = windows().keymap();
    ASSERT_TRUE(waitUntil([this] { return letter() == std::nullopt; }));
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
    expectThatWhatIsBehindGetsNoKeys();
}

TEST_F(SwayKeysTest, withoutAWindowNobodySeesTheKeys)
{
    windows().close("Editor");
    ASSERT_TRUE(waitUntil([this] { return !front(); }));
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
    const WriteTicket ticket = pasteboard.write({{.plainText = "pasted text\n"}});
    ASSERT_TRUE(await(pasteboard.holds(ticket)));
    EXPECT_TRUE(send(target->pasteChord()));
    EXPECT_TRUE(hears("ready\npasted text\n"));
    terminal->kill();
    EXPECT_TRUE(terminal->waitForFinished());
    EXPECT_TRUE(waitUntil([&] { return target->isTerminated(); }));
}

} // namespace tessly::test
