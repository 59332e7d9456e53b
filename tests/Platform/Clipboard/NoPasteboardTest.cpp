#include "NoPasteboard.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace tessly::test {
namespace {

TEST(NoPasteboard, WhoeverLooksFindsThatAccessIsDenied)
{
    NoPasteboard pasteboard;
    EXPECT_EQ(pasteboard.access(), PasteboardAccess::denied);
    const qint64 before = pasteboard.changeCount();
    EXPECT_NE(pasteboard.changeCount(), before);
}

TEST(NoPasteboard, NothingIsReadOrWritten)
{
    NoPasteboard pasteboard;
    const qint64 count = pasteboard.changeCount();
    EXPECT_EQ(await(pasteboard.types(count)), std::nullopt);
    EXPECT_EQ(
        await(pasteboard.read(count, Flavour::plainText, 100)).status, ReadStatus::unreadable);
    EXPECT_EQ(await(pasteboard.readFileURLs(count, 100)).status, ReadStatus::unreadable);
    EXPECT_FALSE(pasteboard.write({PasteboardItem{.plainText = QByteArray("text")}}));
}

} // namespace
} // namespace tessly::test
