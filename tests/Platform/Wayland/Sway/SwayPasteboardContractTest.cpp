#include "SwaySession.h"
#include "WaylandWorld.h"

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// The real thing, with wl-paste to paste.
class SwayWorld final : public WaylandWorld
{
public:
    SwayWorld()
        : WaylandWorld(SwaySession::shared().display())
    {
    }

    [[nodiscard]] std::optional<QByteArray> otherProgramPastes() override
    {
        return SwaySession::shared().output(
            u"wl-paste"_s, {u"--no-newline"_s, u"--type"_s, u"UTF8_STRING"_s});
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Sway, PasteboardContract,
    testing::Values(PasteboardWorldFactory{"Sway", [] { return std::make_unique<SwayWorld>(); }}),
    testing::PrintToStringParamName());

TEST(SwayPrimary, isOfferedOnRequest)
{
    const std::string display = SwaySession::shared().display();
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
