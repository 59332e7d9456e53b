#include "ClipPreview.h"

#include <gtest/gtest.h>

namespace tessly::test {

TEST(ClipPreview, isOfTheFirstThatIsShown)
{
    const ClipPayload::Fields all{
        .plainText = "text",
        .rtf = "{\\rtf1}",
        .html = "<b>bold</b>",
        .imagePNG = "png",
        .fileURLs = {"file:///a"}};
    ClipPayload::Fields fields = all;
    EXPECT_EQ(ClipPreview::of(ClipPayload(fields)), ClipPreview({.fileURLs = {"file:///a"}}));
    fields.fileURLs.clear();
    EXPECT_EQ(ClipPreview::of(ClipPayload(fields)), ClipPreview({.size = 3, .imagePNG = "png"}));
    fields.imagePNG.reset();
    EXPECT_EQ(ClipPreview::of(ClipPayload(fields)), ClipPreview({.size = 4, .text = "text"}));
    fields.plainText.reset();
    EXPECT_EQ(ClipPreview::of(ClipPayload(fields)), ClipPreview({.size = 18, .text = "bold"}));
    fields.html.reset();
    EXPECT_EQ(ClipPreview::of(ClipPayload(fields)), ClipPreview({.size = 7}));
}

TEST(ClipPreview, ofATextIsItsBeginning)
{
    constexpr qint64 most = ClipPreview::textAtMost;
    const QByteArray fits(most, 'x');
    EXPECT_EQ(
        ClipPreview::of(ClipPayload({.plainText = fits})),
        ClipPreview({.size = most, .text = fits}));
    EXPECT_EQ(
        ClipPreview::of(ClipPayload({.plainText = fits + "yz"})),
        ClipPreview({.size = most + 2, .text = fits, .isTextCut = true}));
    EXPECT_EQ(ClipPreview::of(ClipPayload({.plainText = ""})), ClipPreview({.text = ""}));
}

TEST(ClipPreview, ofHTMLIsTheTextInItsBeginning)
{
    const auto of = [](const QByteArray& html) {
        return ClipPreview::of(ClipPayload({.html = html}));
    };
    const QByteArray style = "<style>" + QByteArray(100'000, 'x') + "</style>";
    EXPECT_EQ(of(style + "text").text, "text");
    EXPECT_FALSE(of(style + "text").isTextCut);
    const ClipPreview late = of("early" + style.repeated(3) + "late");
    EXPECT_EQ(late.text, "early");
    EXPECT_TRUE(late.isTextCut);
    const ClipPreview much = of(QByteArray("<p>words</p>").repeated(2000));
    EXPECT_EQ(much.text->size(), ClipPreview::textAtMost);
    EXPECT_TRUE(much.isTextCut);
    EXPECT_EQ(of("<script>alert(1)</script><img src=a.png>").text, std::nullopt);
}

TEST(ClipPreview, isInstantButForHTMLAlone)
{
    EXPECT_FALSE(ClipPreview::isInstant(ClipPayload({.html = "<b>"})));
    EXPECT_FALSE(ClipPreview::isInstant(ClipPayload({.rtf = "", .html = "<b>"})));
    EXPECT_TRUE(ClipPreview::isInstant(ClipPayload({.rtf = ""})));
    EXPECT_TRUE(ClipPreview::isInstant(ClipPayload({.plainText = "", .html = "<b>"})));
    EXPECT_TRUE(ClipPreview::isInstant(ClipPayload({.html = "<b>", .imagePNG = "png"})));
    EXPECT_TRUE(ClipPreview::isInstant(ClipPayload({.html = "<b>", .fileURLs = {"file:///a"}})));
}

} // namespace tessly::test
