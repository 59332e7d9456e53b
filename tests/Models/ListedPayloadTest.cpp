#include "ListedPayload.h"

#include <gtest/gtest.h>

namespace tessly::test {

namespace {

const ClipPayload whole({.plainText = "a\nlink", .imagePNG = "png"});

ListedPayload outlineOf(const ClipPayload& payload)
{
    return ListedPayload(
        ListedPayload::Outline{payload.kind(), payload.previewLine(), payload.contentHash()});
}

} // namespace

TEST(ListedPayload, tellsTheSameOfContentThatIsHeldAndThatIsNot)
{
    for (const ListedPayload& listed : {ListedPayload(whole), outlineOf(whole)}) {
        EXPECT_EQ(listed.kind(), ClipKind::image);
        EXPECT_TRUE(listed.previewLine() == QStringLiteral("a link"));
        EXPECT_EQ(listed.contentHash(), whole.contentHash());
    }
}

TEST(ListedPayload, handsOutOnlyWhatItHolds)
{
    const ListedPayload held = whole;
    ASSERT_NE(held.held(), nullptr);
    EXPECT_EQ(*held.held(), whole);
    EXPECT_EQ(outlineOf(whole).held(), nullptr);
}

TEST(ListedPayload, equalsTheSameContentHeldOrNot)
{
    const ClipPayload other({.plainText = "a\nlink", .imagePNG = "pnG"});
    EXPECT_EQ(ListedPayload(whole), ListedPayload(whole));
    EXPECT_EQ(ListedPayload(whole), outlineOf(whole));
    EXPECT_EQ(outlineOf(whole), ListedPayload(whole));
    EXPECT_EQ(outlineOf(whole), outlineOf(whole));
    EXPECT_NE(ListedPayload(whole), ListedPayload(other));
    EXPECT_NE(ListedPayload(whole), outlineOf(other));
    EXPECT_NE(outlineOf(whole), outlineOf(other));
}

} // namespace tessly::test
