#include "ClipboardMonitorFixture.h"

#include "LogCapture.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using Content = FakePasteboard::Content;

namespace {

class MonitorLogTest : public NotifiedMonitorTest
{
protected:
    /// The lines about one copy, which must be all there are.
    std::vector<QString> linesAbout(Content content)
    {
        const LogCapture log;
        m_pasteboard.copy(std::move(content));
        tick();
        std::vector<QString> lines;
        for (const auto& line : log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s)) {
            EXPECT_EQ(line.level, QtWarningMsg);
            lines.push_back(line.text);
        }
        return lines;
    }
};

TEST_F(MonitorLogTest, EveryCopyThatIsLostIsOneLineWithItsReason)
{
    m_settings.setMaxItemSizeMB(1);
    start();
    EXPECT_THAT(
        linesAbout({.plainText = "secret", .hidesTypes = true}),
        ElementsAre(u"A copy was not recorded: its types could not be read in time."_s));
    EXPECT_THAT(
        linesAbout({.plainText = "secret", .hanging = {Flavour::plainText}}),
        ElementsAre(u"A copy was not recorded: its content could not be read in time."_s));
    EXPECT_THAT(
        linesAbout({.plainText = QByteArray(megabyte + 1, 'a')}),
        ElementsAre(u"A copy was not recorded: it is larger than the configured maximum."_s));
    EXPECT_THAT(
        linesAbout({.otherImage = QByteArray(64 * megabyte + 1, 'a')}),
        ElementsAre(u"A copy was not recorded: it is larger than the configured maximum."_s));
    EXPECT_THAT(
        linesAbout({.otherImage = "broken"}),
        ElementsAre(u"A copy was not recorded: its image could not be read."_s));
    EXPECT_THAT(
        linesAbout({.html = "<b>", .refused = {Flavour::html}}),
        ElementsAre(
            u"A copy was not recorded: its owner handed over nothing of what can be recorded."_s));
}

TEST_F(MonitorLogTest, ACopyForWhichThereIsNoMemoryIsALineAndTheNextIsRecorded)
{
    const auto tooMuch =
        ElementsAre(u"A copy was not recorded: there was not enough memory for it."_s);
    start();
    for (const Flavour flavour : {Flavour::plainText, Flavour::png}) {
        EXPECT_THAT(
            linesAbout(
                {.plainText = "text",
                 .png = FakeImageConverter::png("1"),
                 .beyondMemory = {flavour}}),
            tooMuch);
    }
    EXPECT_THAT(linesAbout({.otherImage = FakeImageConverter::imageBeyondMemory()}), tooMuch);
    EXPECT_THAT(m_captures, IsEmpty());
    EXPECT_THAT(linesAbout({.plainText = "next"}), IsEmpty());
    EXPECT_THAT(m_captures, SizeIs(1));
}

TEST_F(MonitorLogTest, ACopyThatIsOvertakenIsALine)
{
    start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("older");
    tick();
    m_pasteboard.gate().open();
    EXPECT_THAT(
        linesAbout({.plainText = "newer"}),
        ElementsAre(u"A copy was not recorded: a newer copy took its place before it was read."_s));
    EXPECT_THAT(texts(), ElementsAre("newer"));
}

TEST_F(MonitorLogTest, WhatIsNotToBeRecordedIsNoLine)
{
    start();
    EXPECT_THAT(linesAbout({.plainText = "recorded"}), IsEmpty());
    EXPECT_THAT(
        linesAbout({.plainText = "secret", .extraTypes = {Pasteboard::concealedType}}), IsEmpty());
    EXPECT_THAT(
        linesAbout({.plainText = "own", .extraTypes = {Pasteboard::markerType}}), IsEmpty());
    setFront(u"com.1password.1password"_s);
    EXPECT_THAT(linesAbout({.plainText = "secret"}), IsEmpty());
    setFront(u"org.example.Editor"_s);
    m_clock.advance(1s);
    m_settings.setCaptureImages(false);
    EXPECT_THAT(linesAbout({.png = FakeImageConverter::png("1")}), IsEmpty());
}

TEST_F(MonitorLogTest, EveryCopyThatWasReplacedBeforeItWasLookedAtIsALine)
{
    start();
    m_pasteboard.missCopies(2);
    const auto overtaken =
        u"A copy was not recorded: a newer copy took its place before it was read."_s;
    EXPECT_THAT(linesAbout({.plainText = "newer"}), ElementsAre(overtaken, overtaken));
    EXPECT_THAT(linesAbout({.plainText = "newest"}), IsEmpty());
}

TEST_F(MonitorLogTest, WhatIsMissedWhilePausedIsNoLine)
{
    start();
    m_monitor->togglePaused();
    m_pasteboard.missCopies(1);
    EXPECT_THAT(linesAbout({.plainText = "paused"}), IsEmpty());
}

TEST_F(MonitorLogTest, WhatWasThereAtTheStartIsNoLine)
{
    m_pasteboard.copy({.plainText = "old", .hidesTypes = true});
    const LogCapture log;
    start();
    tick();
    m_pasteboard.gate().hold();
    m_monitor->togglePaused();
    m_monitor->togglePaused();
    m_monitor->stop();
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s), IsEmpty());
}

TEST_F(MonitorLogTest, WhatIsBeingReadWhenTheUserPausesIsALine)
{
    start();
    m_pasteboard.gate().hold();
    m_pasteboard.copyText("text");
    tick();
    const LogCapture log;
    m_monitor->togglePaused();
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.ClipboardMonitor"_s), SizeIs(1));
}

} // namespace
} // namespace tessly::test
