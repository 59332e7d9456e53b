#include "KWinSession.h"
#include "WaylandWorld.h"

namespace tessly::test {

namespace {

/// The real thing. Not with wl-paste, which waits for ever here while the clipboard is empty.
class KWinWorld final : public WaylandWorld
{
public:
    KWinWorld()
        : WaylandWorld(KWinSession::shared().display())
    {
    }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        return m_other.paste();
    }

private:
    WaylandProgram m_other{KWinSession::shared().display()};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    KWin, PasteboardContract,
    testing::Values(PasteboardWorldFactory{"KWin", [] { return std::make_unique<KWinWorld>(); }}),
    testing::PrintToStringParamName());

TEST(KWinPrimary, isOfferedOnRequest)
{
    const std::string display = KWinSession::shared().display();
    WaylandPasteboard pasteboard({.display = display, .deadlines = {}});
    WaylandProgram other(display);
    WriteTicket ticket;
    EXPECT_FALSE(await(pasteboard.offerAsPrimary(ticket)));
    ASSERT_TRUE(ticket = pasteboard.write({PasteboardItem{.plainText = "text"}}));
    EXPECT_TRUE(await(pasteboard.offerAsPrimary(ticket)));
    EXPECT_EQ(other.pastePrimary(), "text");
    other.copyAsPrimary("other");
    EXPECT_EQ(other.pastePrimary(), "other");
    EXPECT_EQ(other.paste(), "text");
    EXPECT_TRUE(await(pasteboard.offerAsPrimary(ticket)));
    EXPECT_EQ(other.pastePrimary(), "text");
    pasteboard.clear();
    EXPECT_TRUE(waitUntil([&] { return other.types().isEmpty(); }));
    EXPECT_EQ(other.pastePrimary(), std::nullopt);
}

} // namespace tessly::test
