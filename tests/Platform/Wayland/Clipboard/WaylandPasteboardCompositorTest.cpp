#include "WaylandPasteboardFixture.h"

#include <QElapsedTimer>

namespace tessly::test {

namespace {

class WaylandPasteboardCompositorTest : public WaylandPasteboardTest
{
protected:
    /// Waits until nothing can be written. Each write has arrived before the next: more requests
    /// than a connection holds would end it.
    [[nodiscard]] bool writingIsRefused()
    {
        return waitUntil([this] {
            const WriteTicket ticket = pasteboard().write({{.plainText = "own"}});
            if (ticket) {
                await(pasteboard().holds(ticket));
            }
            return !ticket;
        });
    }
};

constexpr auto ext = "ext_data_control_manager_v1";
constexpr auto wlr = "zwlr_data_control_manager_v1";

WaylandPasteboard::Options options(const TestCompositor& compositor)
{
    return {
        .display = compositor.display(),
        .deadlines = {.connection = std::chrono::milliseconds(300)}};
}

} // namespace

TEST(WaylandPasteboardStart, extDataControlComesFirst)
{
    TestCompositor compositor({.hasWlr = true});
    const WaylandPasteboard pasteboard(options(compositor));
    EXPECT_EQ(pasteboard.access(), PasteboardAccess::available);
    EXPECT_EQ(compositor.binds(ext), 1);
    EXPECT_EQ(compositor.binds(wlr), 0);
}

TEST(WaylandPasteboardStart, aCompositorWithoutDataControlIsAnError)
{
    const TestCompositor compositor({.hasExt = false});
    EXPECT_THROW(WaylandPasteboard{options(compositor)}, WaylandError);
}

TEST(WaylandPasteboardStart, noCompositorIsAnError)
{
    EXPECT_THROW(WaylandPasteboard({.display = "/nowhere/at/all", .deadlines = {}}), WaylandError);
}

TEST(WaylandPasteboardStart, aCompositorThatDoesNotAnswerIsAnError)
{
    TestCompositor compositor;
    compositor.freeze();
    EXPECT_THROW(WaylandPasteboard{options(compositor)}, WaylandError);
}

TEST(WaylandPasteboardStart, theSeatMayComeLater)
{
    TestCompositor compositor({.hasSeat = false});
    WaylandPasteboard pasteboard(options(compositor));
    EXPECT_FALSE(pasteboard.write({{.plainText = "own"}}));
    EXPECT_EQ(await(pasteboard.types(pasteboard.changeCount())), QSet<QString>());
    compositor.addSeat();
    EXPECT_TRUE(waitUntil([&] { return pasteboard.write({{.plainText = "own"}}); }));
    WaylandProgram program(compositor.display());
    EXPECT_TRUE(waitUntil([&] { return program.paste() == "own"; }));
}

TEST_F(WaylandPasteboardCompositorTest, itsEndIsToldOnceAndEndsWhatIsAwaited)
{
    usePasteboard(longDeadlines());
    int losses = 0;
    pasteboard().setConnectionLost([&losses] { ++losses; });
    const qint64 count = copied({{"UTF8_STRING", "never", Manner::hangs}});
    auto text = pasteboard().read(count, Flavour::plainText, megabyte);
    ASSERT_TRUE(waitUntil([this] { return program().sends() == 1; }));
    compositor().end();
    EXPECT_EQ(await(std::move(text)).status, ReadStatus::unreadable);
    ASSERT_TRUE(waitUntil([&] { return losses > 0; }));

    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(read(count).status, ReadStatus::unreadable);
    EXPECT_EQ(await(pasteboard().readFileURLs(count, noLimit)).status, ReadStatus::unreadable);
    EXPECT_FALSE(pasteboard().write({{.plainText = "own"}}));
    EXPECT_FALSE(await(pasteboard().holds(m_ticket)));
    pasteboard().clear();
    pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "kept"}});
    EXPECT_EQ(types(count), std::nullopt);
    EXPECT_EQ(losses, 1);
}

TEST_F(WaylandPasteboardCompositorTest, oneThatFreezesHoldsUpNeitherTheMainThreadNorItsEnd)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    compositor().freeze();
    // More than its socket takes.
    const PasteboardItem item = {.plainText = "own"};
    for (int number = 0; number < 2000; ++number) {
        EXPECT_TRUE(m_ticket = pasteboard().write({item}));
    }
    pasteboard().clear();
    EXPECT_EQ(read(count).status, ReadStatus::unreadable);
    endPasteboard();
    compositor().thaw();
    usePasteboard(shortDeadlines());
    expectThatTheNextCopyIsRead();
}

TEST_F(WaylandPasteboardCompositorTest, theTimeForWhichItIsFrozenIsNotTheOwners)
{
    using std::chrono::milliseconds;
    usePasteboard({.stall = milliseconds(500)});
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    compositor().freeze();
    auto text = pasteboard().read(count, Flavour::plainText, noLimit);
    const QDeadlineTimer longerThanTheStall(milliseconds(1500));
    ASSERT_TRUE(waitUntil([&] { return longerThanTheStall.hasExpired(); }));
    compositor().thaw();
    EXPECT_EQ(await(std::move(text)).value, "text");
}

TEST_F(WaylandPasteboardCompositorTest, theEndOfOneThatWasFrozenEndsTheWaitForIt)
{
    compositor().freeze();
    ASSERT_TRUE(m_ticket = pasteboard().write({{.plainText = "own"}}));
    auto hasWritten = pasteboard().holds(m_ticket);
    compositor().end();
    EXPECT_FALSE(await(std::move(hasWritten)));
}

TEST_F(WaylandPasteboardCompositorTest, aSeatThatGoesTakesTheClipboardWithIt)
{
    const qint64 count = copied({{"UTF8_STRING", "text"}});
    pasteboard().keepWhenOwnerLeaves(count, {{.plainText = "kept"}});
    compositor().removeSeat();
    ASSERT_TRUE(writingIsRefused());
    EXPECT_EQ(read(count).status, ReadStatus::absent);
    compositor().addSeat();
    ASSERT_TRUE(waitUntil([this] { return pasteboard().write({{.plainText = "own"}}); }));
    EXPECT_TRUE(waitUntil([this] { return read(pasteboard().changeCount()).value == "own"; }));
}

TEST_F(WaylandPasteboardCompositorTest, aDeviceThatIsFinishedIsLetGoOf)
{
    copied({{"UTF8_STRING", "text"}});
    compositor().finishDevices();
    EXPECT_TRUE(writingIsRefused());
}

} // namespace tessly::test
