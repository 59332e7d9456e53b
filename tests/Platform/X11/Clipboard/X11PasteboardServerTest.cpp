#include "X11PasteboardFixture.h"
#include "XClient.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// The server itself misbehaves: it goes away, freezes, or is grabbed.
class X11PasteboardServerTest : public X11PasteboardTest
{
protected:
    X11PasteboardServerTest() { usePasteboard(shortDeadlines()); }

    /// Another program that has the server for itself, until it gets a line.
    [[nodiscard]] std::unique_ptr<QProcess> grab()
    {
        auto process =
            session().start(u"/usr/bin/python3"_s, {desktopScript(u"reader.py"_s), u"--grab"_s});
        EXPECT_TRUE(waitUntil([&] { return process->canReadLine(); }));
        EXPECT_EQ(process->readLine(), "grabbed\n");
        return process;
    }

    /// Has the server for itself for so long, by the server's clock, and does something meanwhile.
    template <typename Action>
    void whileGrabbed(std::chrono::milliseconds time, Action action)
    {
        XClient grabber(session().display());
        grabber.grabServer();
        grabber.sync();
        const xcb_timestamp_t start = grabber.time();
        action();
        EXPECT_TRUE(
            waitUntil([&] { return std::chrono::milliseconds(grabber.time() - start) >= time; }));
        grabber.ungrabServer();
        grabber.sync();
    }

    static void endGrab(QProcess& process)
    {
        process.write("\n");
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
    }
};

} // namespace

TEST_F(X11PasteboardServerTest, itsEndIsToldOnceAndEverythingIsUnreadableFromThenOn)
{
    const qint64 count = copied({u"--text"_s, u"text"_s, u"--behave"_s, u"*"_s, u"silent"_s});
    int losses = 0;
    pasteboard().setConnectionLost([&losses] { ++losses; });
    auto pending = pasteboard().read(count, Flavour::plainText, noLimit);
    ASSERT_TRUE(owner().waitForLine("request UTF8_STRING"));

    session().killServer();
    EXPECT_EQ(await(std::move(pending)).status, ReadStatus::unreadable);
    ASSERT_TRUE(waitUntil([&] { return losses > 0; }));
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(read(count, Flavour::plainText).status, ReadStatus::unreadable);
    EXPECT_EQ(readFiles(count).status, ReadStatus::unreadable);
    EXPECT_FALSE(pasteboard().write({PasteboardItem{.plainText = "text"}}));
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
    EXPECT_FALSE(await(pasteboard().offerAsPrimary(m_ticket)));
    pasteboard().clear();
    pasteboard().keepWhenOwnerLeaves(count, {PasteboardItem{.plainText = "text"}});
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(pasteboard().changeCount(), count);
    EXPECT_EQ(losses, 1);
}

TEST_F(X11PasteboardServerTest, itsEndMayComeInTheMiddleOfATransfer)
{
    written({.plainText = filling(20'000'000)});
    const auto slow = session().start(
        u"/usr/bin/python3"_s,
        {desktopScript(u"reader.py"_s), u"--stall"_s, u"2"_s, u"UTF8_STRING"_s});
    ASSERT_TRUE(waitUntil([&] { return slow->canReadLine(); }));
    auto primary = pasteboard().offerAsPrimary(m_ticket);
    session().killServer();
    EXPECT_TRUE(
        waitUntil([this] { return !pasteboard().write({PasteboardItem{.plainText = "text"}}); }));
    // True if it came before the end; that there is an answer is what matters.
    await(std::move(primary));
}

TEST_F(X11PasteboardServerTest, thereMustBeOne)
{
    EXPECT_THROW(X11Pasteboard({.display = ":987", .deadlines = {}}), X11Error);
}

TEST_F(X11PasteboardServerTest, deadlinesHoldWhileAnotherProgramHasItGrabbed)
{
    const qint64 count = copied({u"--text"_s, u"text"_s});
    const auto grabber = grab();
    QElapsedTimer elapsed;
    elapsed.start();
    auto offered = pasteboard().types(count);
    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    EXPECT_TRUE(m_ticket = pasteboard().write({PasteboardItem{.plainText = "own"}}));
    auto primary = pasteboard().offerAsPrimary(m_ticket);
    EXPECT_LT(elapsed.elapsed(), 250) << "the calls themselves wait for nobody";
    EXPECT_EQ(await(std::move(offered)), std::nullopt);
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    EXPECT_EQ(pasteboard().changeCount(), count);

    endGrab(*grabber);
    EXPECT_TRUE(await(std::move(primary)));
    EXPECT_EQ(xclip(u"UTF8_STRING"_s), "own");
    EXPECT_EQ(readText(pasteboard().changeCount()), "own");
}

TEST_F(X11PasteboardServerTest, theTimeForWhichAnotherProgramHasItGrabbedIsNotTheOwners)
{
    usePasteboard({.stall = std::chrono::seconds(1)});
    const qint64 count = copied({u"--text"_s, u"text"_s, u"--behave"_s, u"*"_s, u"hold"_s});
    // Long enough for two lists of types.
    std::optional<QCoro::Task<std::optional<QSet<QString>>>> offered;
    whileGrabbed(std::chrono::seconds(3), [&] { offered.emplace(pasteboard().types(count)); });
    const auto types = await(std::move(*offered));
    ASSERT_TRUE(types);
    EXPECT_TRUE(types->contains(u"UTF8_STRING"_s));
    owner().command("counts");
    EXPECT_TRUE(owner().waitForLine("count TARGETS 1"));

    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    ASSERT_TRUE(owner().waitForLine("request UTF8_STRING"));
    whileGrabbed(std::chrono::seconds(3), [&] { owner().command("go"); });
    EXPECT_EQ(await(std::move(text)).value, "text");
}

TEST_F(X11PasteboardServerTest, theMiddleOfAReadMayMeetAGrab)
{
    const qint64 count = copied({u"--text"_s, u"text"_s, u"--behave"_s, u"*"_s, u"hold"_s});
    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    ASSERT_TRUE(owner().waitForLine("request UTF8_STRING"));
    const auto grabber = grab();
    owner().command("go");
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    endGrab(*grabber);
    expectThatTheNextCopyIsRead();
}

TEST_F(X11PasteboardServerTest, endingThePasteboardEndsWhatIsAwaited)
{
    const qint64 count = copied({u"--text"_s, u"text"_s, u"--behave"_s, u"*"_s, u"silent"_s});
    const auto grabber = grab();
    auto offered = pasteboard().types(count);
    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    auto files = pasteboard().readFileURLs(count, noLimit);
    auto primary = pasteboard().offerAsPrimary(m_ticket);
    endPasteboard();
    EXPECT_EQ(await(std::move(offered)), std::nullopt);
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    EXPECT_EQ(await(std::move(files)).status, ReadStatus::unreadable);
    EXPECT_FALSE(await(std::move(primary)));
    endGrab(*grabber);
}

TEST_F(X11PasteboardServerTest, aTaskThatNobodyAwaitsIsHarmless)
{
    const qint64 count = copied({u"--text"_s, u"text"_s, u"--behave"_s, u"*"_s, u"silent"_s});
    {
        [[maybe_unused]] const auto dropped = pasteboard().read(count, Flavour::plainText, noLimit);
        ASSERT_TRUE(owner().waitForLine("request UTF8_STRING"));
    }
    expectThatTheNextCopyIsRead();
    endPasteboard();
    QCoreApplication::processEvents();
}

} // namespace tessly::test
