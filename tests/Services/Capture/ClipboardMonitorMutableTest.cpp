#include "ClipboardMonitorFixture.h"

#include "LogCapture.h"
#include "PasteboardItems.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Content = FakePasteboard::Content;

namespace {

/// Content that its owner changes without telling.
class MutableContentTest : public NotifiedMonitorTest
{
protected:
    void copyFirst()
    {
        setFront(u"tk"_s);
        m_clock.advance(1s);
        start();
        m_pasteboard.copy(content("one"));
        tick();
    }

    static Content content(const QByteArray& text)
    {
        return {.plainText = text, .extraTypes = {u"TK_APPLICATION"_s}};
    }
};

TEST_F(MutableContentTest, ItIsReadAgainWhenTheFocusLeaves)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    tick();
    EXPECT_THAT(texts(), ElementsAre("one"));
    setFront(u"org.example.Editor"_s);
    settle();
    EXPECT_THAT(texts(), ElementsAre("one", "two"));
    EXPECT_EQ(m_captures.at(1).bundleID, u"tk"_s);
    setFront(u"tk"_s);
    settle();
    EXPECT_THAT(m_captures, SizeIs(2)) << "what has not changed is no entry";
}

TEST_F(MutableContentTest, ItIsReadAgainWhereEverythingIsToBeRecorded)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    m_monitor->settle(1s);
    settle();
    EXPECT_THAT(texts(), ElementsAre("one", "two"));
}

TEST_F(MutableContentTest, WhatMayHaveChangedIsNotBroughtBack)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    m_pasteboard.ownerLeaves();
    EXPECT_FALSE(m_pasteboard.isOwn());
}

TEST_F(MutableContentTest, WhatWasReadAfterTheFocusLeftIsBroughtBack)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    setFront(u"org.example.Editor"_s);
    settle();
    m_pasteboard.ownerLeaves();
    EXPECT_EQ(m_pasteboard.ownItems(), pasteboardItems(text("two")));
}

TEST_F(MutableContentTest, OnceTheFocusIsBackItMayChangeAgain)
{
    copyFirst();
    setFront(u"org.example.Editor"_s);
    settle();
    setFront(u"tk"_s);
    settle();
    m_pasteboard.ownerLeaves();
    EXPECT_FALSE(m_pasteboard.isOwn());
}

TEST_F(MutableContentTest, AnotherCopyPutsAnEndToIt)
{
    copyFirst();
    m_pasteboard.copyText("other");
    tick();
    m_pasteboard.forgetRequests();
    setFront(u"org.example.Editor"_s);
    settle();
    EXPECT_THAT(m_pasteboard.requests(), IsEmpty());
}

TEST_F(MutableContentTest, WhatIsThereAtTheStartIsNotRecordedButWhatItBecomesIs)
{
    setFront(u"tk"_s);
    m_clock.advance(1s);
    m_pasteboard.copy(content("old"));
    start();
    tick();
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    setFront(u"tk"_s);
    m_clock.advance(1s);
    m_pasteboard.changeSilently(content("new"));
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(texts(), ElementsAre("new"));
    EXPECT_EQ(m_captures.at(0).bundleID, u"tk"_s);
}

TEST_F(MutableContentTest, AfterAPauseItIsReadAgain)
{
    copyFirst();
    m_monitor->togglePaused();
    m_pasteboard.changeSilently(content("paused"));
    m_monitor->togglePaused();
    tick();
    m_pasteboard.changeSilently(content("two"));
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(texts(), ElementsAre("one", "two"));
}

TEST_F(MutableContentTest, WhatWasThereAtTheStartIsNotBroughtBack)
{
    m_pasteboard.copy(content("old"));
    start();
    tick();
    m_pasteboard.ownerLeaves();
    EXPECT_FALSE(m_pasteboard.isOwn());
}

TEST_F(MutableContentTest, AnApplicationThatIsIgnoredByNowIsNotReadAgain)
{
    copyFirst();
    m_settings.setIgnoredBundleIDsText(u"tk"_s);
    m_pasteboard.changeSilently(content("secret"));
    m_pasteboard.forgetRequests();
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(texts(), ElementsAre("one"));
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_F(MutableContentTest, WhatChangesWhileItIsReadAgainIsReadOnceMore)
{
    copyFirst();
    m_pasteboard.changeSilently(content("two"));
    m_pasteboard.gate().hold();
    setFront(u"org.example.Editor"_s);
    m_clock.advance(0ms);
    m_pasteboard.gate().releaseOne();
    m_clock.advance(0ms);
    setFront(u"tk"_s);
    m_pasteboard.changeSilently(content("three"));
    bool isSettled = false;
    whenDone(m_monitor->settle(1s), [&] { isSettled = true; });
    m_pasteboard.gate().open();
    tick();
    EXPECT_TRUE(isSettled);
    EXPECT_THAT(texts(), testing::Contains("three"));
    EXPECT_EQ(texts().back(), "three");
}

TEST_F(MutableContentTest, AnEndOfItsOwnerIsNoLossAndNoLine)
{
    copyFirst();
    const LogCapture log;
    m_pasteboard.ownerLeaves();
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(texts(), ElementsAre("one"));
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s), IsEmpty());
}

TEST_F(MutableContentTest, WhatMayBelongToAnIgnoredApplicationIsNotReadFromThenOn)
{
    m_settings.setIgnoredBundleIDsText(u"secrets"_s);
    m_pasteboard.copy(content("old"));
    start();
    tick();
    setFront(u"secrets"_s);
    m_clock.advance(1s);
    m_pasteboard.changeSilently(content("secret"));
    setFront(u"org.example.Editor"_s);
    m_clock.advance(1s);
    m_pasteboard.forgetRequests();
    setFront(u"org.example.Viewer"_s);
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

} // namespace
} // namespace tessly::test
