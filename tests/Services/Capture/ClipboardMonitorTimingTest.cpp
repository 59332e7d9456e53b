#include "ClipboardMonitorFixture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

namespace {

// Being told of changes

TEST_F(NotifiedMonitorTest, ACopyIsReadOnceNothingFollowedIt)
{
    start();
    m_pasteboard.copyText("one");
    m_clock.advance(19ms);
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
    m_clock.advance(1ms);
    EXPECT_THAT(texts(), ElementsAre("one"));
}

TEST_F(NotifiedMonitorTest, SeveralChangesInARowAreReadOnce)
{
    start();
    for (const char* text : {"a", "b", "c"}) {
        m_pasteboard.copyText(text);
        m_clock.advance(15ms);
    }
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
    m_clock.advance(5ms);
    EXPECT_THAT(texts(), ElementsAre("c"));
}

TEST_F(NotifiedMonitorTest, ChangesThatDoNotEndAreReadSixtyMillisecondsAfterTheFirst)
{
    start();
    for (int number = 1; number <= 12; ++number) {
        m_pasteboard.copyText(QByteArray::number(number));
        m_clock.advance(10ms);
    }
    EXPECT_THAT(texts(), ElementsAre("6", "12"));
}

TEST_F(NotifiedMonitorTest, CopiesThatFollowEachOtherQuicklyAreEachAnEntry)
{
    start();
    for (int number = 0; number < 50; ++number) {
        m_pasteboard.copyText(QByteArray::number(number));
        m_clock.advance(50ms);
    }
    EXPECT_THAT(m_captures, SizeIs(50));
}

TEST_F(NotifiedMonitorTest, TheTimeUntilAChangeIsToldOfCounts)
{
    m_pasteboard.setContentAge(15ms);
    start();
    m_pasteboard.copyText("one");
    m_clock.advance(5ms);
    EXPECT_THAT(m_captures, SizeIs(1));
    m_pasteboard.setContentAge(1h);
    m_pasteboard.copyText("two");
    settle();
    EXPECT_THAT(m_captures, SizeIs(2));
}

TEST_F(NotifiedMonitorTest, AtRestNothingIsWaitedFor)
{
    start();
    EXPECT_EQ(m_clock.pending(), 0U);
    m_pasteboard.copyText("one");
    m_clock.advance(60ms);
    EXPECT_THAT(m_captures, SizeIs(1));
    EXPECT_EQ(m_clock.pending(), 0U);
}

// What was in front

TEST_F(NotifiedMonitorTest, AnIgnoredApplicationThatWasInFrontForAMomentCounts)
{
    start();
    setFront(u"com.1password.1password"_s);
    m_clock.advance(10ms);
    m_pasteboard.copyText("secret");
    m_clock.advance(10ms);
    setFront(u"org.example.Other"_s);
    m_clock.advance(10ms);
    setFront(u"org.example.Editor"_s);
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_EQ(m_pasteboard.contentRequests(), 0U);
}

TEST_F(NotifiedMonitorTest, HowLongTheChangeWasThereIsAddedToTheTimeThatCounts)
{
    start();
    setFront(u"com.1password.1password"_s);
    setFront(u"org.example.Editor"_s);
    m_clock.advance(500ms);
    m_pasteboard.setContentAge(151ms);
    m_pasteboard.copyText("secret");
    tick();
    EXPECT_THAT(m_captures, IsEmpty());
}

TEST_F(NotifiedMonitorTest, ACopyInTheOwnWindowIsCreditedToTheLastOtherApplication)
{
    start();
    setFront(u"org.example.Viewer"_s);
    setFront(u"com.brackmoor.tessly"_s);
    setFront(u"org.example.Terminal"_s);
    setFront(u"com.brackmoor.tessly"_s);
    m_pasteboard.copyText("text");
    tick();
    EXPECT_EQ(m_captures.at(0).bundleID, u"org.example.Terminal"_s);
}

} // namespace
} // namespace tessly::test
