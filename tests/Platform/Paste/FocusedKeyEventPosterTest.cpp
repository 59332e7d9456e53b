#include "FocusedKeyEventPoster.h"

#include "FakeKeySender.h"
#include "FakePasteTarget.h"
#include "FakeRunningApplication.h"
#include "Gate.h"
#include "contract/KeyEventPosterContract.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

/// A clipboard that takes its time.
class SlowClipboard
{
public:
    [[nodiscard]] PasteClipboard questions()
    {
        return {
            .holds = [this](WriteTicket) { return write(); },
            .isText = [this](WriteTicket) { return m_isText; },
            .offerAsPrimary = [this](WriteTicket) { return offer(); },
            .begin =
                [this](WriteTicket, bool isPrimaryPasted) {
                    m_wasPrimaryNeeded = isPrimaryPasted;
                    return !m_isReplaced;
                }};
    }
    Gate& writes() { return m_writes; }
    Gate& offers() { return m_offers; }
    void refuseToWrite() { m_canWrite = false; }
    void refuseToOffer() { m_canOffer = false; }
    void setText(bool isText) { m_isText = isText; }
    void replaceAfterTheAnswer() { m_isReplaced = true; }
    [[nodiscard]] int offersAsked() const { return m_offersAsked; }
    /// Whether PRIMARY had to be there, too, when the keys were last due.
    [[nodiscard]] bool wasPrimaryNeeded() const { return m_wasPrimaryNeeded; }

private:
    // No lambdas: the poster may go, and what they capture with it, while they wait.
    QCoro::Task<bool> write()
    {
        co_await m_writes.pass();
        co_return m_canWrite;
    }
    QCoro::Task<bool> offer()
    {
        ++m_offersAsked;
        co_await m_offers.pass();
        co_return m_canOffer;
    }

    Gate m_writes;
    Gate m_offers;
    bool m_canWrite = true;
    bool m_canOffer = true;
    bool m_isText = true;
    bool m_isReplaced = false;
    int m_offersAsked = 0;
    bool m_wasPrimaryNeeded = false;
};

/// A desktop in memory whose keys go to whatever is in front.
class FocusedApplications
{
public:
    FocusedApplications()
    {
        m_sender.setSeen([this](PasteChord) { ++m_pastes[m_workspace.front]; });
    }

    Workspace& workspace() { return m_workspace; }
    KeyEventPoster& poster() { return *m_poster; }
    void endPoster() { m_poster.reset(); }

    void show(const QString& id)
    {
        m_applications[id] = std::make_shared<FakePasteTarget>(id);
        bringToFront(id);
    }
    void bringToFront(const QString& id)
    {
        if (m_workspace.front) {
            m_workspace.front->setActive(false);
        }
        m_workspace.front = m_applications.at(id);
        m_workspace.front->setActive(true);
    }
    void close(const QString& id)
    {
        m_applications.at(id)->terminate();
        m_workspace.front.reset();
    }
    int pastesSeenBy(const QString& id) { return m_pastes[m_applications.at(id)]; }
    void holdKeys() { m_clipboard.writes().hold(); }
    void letKeysGo() { m_clipboard.writes().open(); }
    void replaceContent() { m_clipboard.refuseToWrite(); }

private:
    class FrontWorkspace final : public Workspace
    {
    public:
        std::shared_ptr<FakePasteTarget> front;

        [[nodiscard]] std::shared_ptr<RunningApplication> frontmostApplication() const override
        {
            return front;
        }
        [[nodiscard]] QCoro::Task<std::vector<std::shared_ptr<RunningApplication>>>
        inFrontDuring(Clock::Duration /*span*/) override
        {
            co_return {front};
        }
        void setFrontmostChanged(std::function<void()> /*changed*/) override {}
    };

    FrontWorkspace m_workspace;
    std::map<QString, std::shared_ptr<FakePasteTarget>> m_applications;
    std::map<std::shared_ptr<FakePasteTarget>, int> m_pastes;
    SlowClipboard m_clipboard;
    FakeKeySender m_sender;
    std::unique_ptr<FocusedKeyEventPoster> m_poster =
        std::make_unique<FocusedKeyEventPoster>(m_sender, m_clipboard.questions());
};

INSTANTIATE_TYPED_TEST_SUITE_P(Focused, KeyEventPosterContract, FocusedApplications);

class FocusedKeyEventPosterTest : public testing::Test
{
protected:
    std::shared_ptr<FakePasteTarget> inFront(PasteChord chord = PasteChord::controlV)
    {
        auto target = std::make_shared<FakePasteTarget>(u"Editor"_s, chord);
        target->setActive(true);
        return target;
    }

    SlowClipboard m_clipboard;
    FakeKeySender m_sender;
    FocusedKeyEventPoster m_poster{m_sender, m_clipboard.questions()};
};

TEST_F(FocusedKeyEventPosterTest, AccessIsTheSendersBusiness)
{
    EXPECT_TRUE(m_poster.isAllowed());
    m_sender.setAllowed(false);
    EXPECT_FALSE(m_poster.isAllowed());
    EXPECT_FALSE(m_poster.requestAccess());
    m_sender.setGrantsRequests(true);
    EXPECT_TRUE(m_poster.requestAccess());
    EXPECT_EQ(m_sender.accessRequests(), 2);
    EXPECT_TRUE(m_poster.isAllowed());
}

TEST_F(FocusedKeyEventPosterTest, EachTargetGetsItsChord)
{
    for (const auto chord :
         {PasteChord::controlV, PasteChord::controlShiftV, PasteChord::shiftInsert}) {
        EXPECT_EQ(await(m_poster.postPaste(inFront(chord), WriteTicket(1))), PostResult::posted);
        EXPECT_EQ(m_clipboard.wasPrimaryNeeded(), chord == PasteChord::shiftInsert);
    }
    EXPECT_THAT(
        m_sender.chords(),
        ElementsAre(PasteChord::controlV, PasteChord::controlShiftV, PasteChord::shiftInsert));
    EXPECT_EQ(m_clipboard.offersAsked(), 1) << "PRIMARY is the user's where it is not needed";
}

TEST_F(FocusedKeyEventPosterTest, TextMayHaveAChordOfItsOwn)
{
    const auto target = inFront();
    target->setTextPasteChord(PasteChord::shiftInsert);
    for (const bool isText : {true, false}) {
        m_clipboard.setText(isText);
        EXPECT_EQ(await(m_poster.postPaste(target, WriteTicket(1))), PostResult::posted);
        EXPECT_EQ(m_clipboard.wasPrimaryNeeded(), isText);
    }
    EXPECT_THAT(m_sender.chords(), ElementsAre(PasteChord::shiftInsert, PasteChord::controlV));
}

TEST_F(FocusedKeyEventPosterTest, WhatCannotBePastedIntoIsNotInFront)
{
    const auto application = std::make_shared<FakeRunningApplication>(u"Editor"_s);
    application->setActive(true);
    EXPECT_EQ(await(m_poster.postPaste(application, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(await(m_poster.postPaste(nullptr, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
}

TEST_F(FocusedKeyEventPosterTest, NoKeysAreSentBeforeTheContentIsThere)
{
    m_clipboard.writes().hold();
    auto posting = m_poster.postPaste(inFront(), WriteTicket(1));
    ASSERT_TRUE(waitUntil([this] { return m_clipboard.writes().waiting() == 1; }));
    EXPECT_THAT(m_sender.chords(), IsEmpty());
    m_clipboard.writes().open();
    EXPECT_EQ(await(std::move(posting)), PostResult::posted);
}

TEST_F(FocusedKeyEventPosterTest, ContentThatIsNotThereIsNotPasted)
{
    m_clipboard.refuseToWrite();
    EXPECT_EQ(await(m_poster.postPaste(inFront(), WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
}

TEST_F(FocusedKeyEventPosterTest, WithoutAnOfferOfPrimaryItIsNotPastedFrom)
{
    m_clipboard.refuseToOffer();
    EXPECT_EQ(
        await(m_poster.postPaste(inFront(PasteChord::shiftInsert), WriteTicket(1))),
        PostResult::failed);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
    EXPECT_EQ(await(m_poster.postPaste(inFront(), WriteTicket(1))), PostResult::posted);
}

TEST_F(FocusedKeyEventPosterTest, ATargetThatLeavesTheFrontDuringTheOfferGetsNoKeys)
{
    const auto target = inFront(PasteChord::shiftInsert);
    m_clipboard.offers().hold();
    auto posting = m_poster.postPaste(target, WriteTicket(1));
    ASSERT_TRUE(waitUntil([this] { return m_clipboard.offers().waiting() == 1; }));
    target->setActive(false);
    m_clipboard.offers().open();
    EXPECT_EQ(await(std::move(posting)), PostResult::targetNotInFront);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
}

TEST_F(FocusedKeyEventPosterTest, ATargetThatTheDesktopTellsToHaveLeftIsNotInFront)
{
    m_sender.loseTarget();
    EXPECT_EQ(await(m_poster.postPaste(inFront(), WriteTicket(1))), PostResult::targetNotInFront);
}

TEST_F(FocusedKeyEventPosterTest, WhatIsCopiedWhileKeysAreWaitedForIsNotPasted)
{
    m_sender.held().hold();
    auto posting = m_poster.postPaste(inFront(), WriteTicket(1));
    ASSERT_TRUE(waitUntil([this] { return m_sender.held().waiting() == 1; }));
    m_clipboard.refuseToWrite();
    m_sender.held().open();
    EXPECT_EQ(await(std::move(posting)), PostResult::contentReplaced);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
}

TEST_F(FocusedKeyEventPosterTest, WhatIsCopiedAtTheLastMomentIsNotPasted)
{
    m_clipboard.replaceAfterTheAnswer();
    EXPECT_EQ(await(m_poster.postPaste(inFront(), WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
}

TEST_F(FocusedKeyEventPosterTest, WithKeysHeldForTooLongNoneAreSent)
{
    m_sender.setNeverReady();
    EXPECT_EQ(await(m_poster.postPaste(inFront(), WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_THAT(m_sender.chords(), IsEmpty());
}

TEST_F(FocusedKeyEventPosterTest, WithoutKeysForTheChordTheOneThatNeedsNoLetterIsSent)
{
    for (const PasteChord chord : {PasteChord::controlV, PasteChord::controlShiftV}) {
        m_sender.setLacking(chord);
        EXPECT_EQ(await(m_poster.postPaste(inFront(chord), WriteTicket(1))), PostResult::posted);
    }
    EXPECT_THAT(m_sender.chords(), ElementsAre(PasteChord::shiftInsert, PasteChord::shiftInsert));
    EXPECT_EQ(m_clipboard.offersAsked(), 2);
    m_sender.setLacking(PasteChord::shiftInsert);
    EXPECT_EQ(
        await(m_poster.postPaste(inFront(PasteChord::shiftInsert), WriteTicket(1))),
        PostResult::failed);
}

TEST_F(FocusedKeyEventPosterTest, KeysThatTheUserHoldsAreWaitedForAndTheTargetLookedAtThen)
{
    const auto target = inFront();
    m_sender.held().hold();
    auto first = m_poster.postPaste(target, WriteTicket(1));
    auto second = m_poster.postPaste(target, WriteTicket(1));
    ASSERT_TRUE(waitUntil([this] { return m_sender.held().waiting() == 2; }));
    EXPECT_THAT(m_sender.chords(), IsEmpty());
    m_sender.held().releaseOne();
    EXPECT_EQ(await(std::move(first)), PostResult::posted);
    target->setActive(false);
    m_sender.held().open();
    EXPECT_EQ(await(std::move(second)), PostResult::targetNotInFront);
    EXPECT_EQ(m_sender.chords().size(), 1U);
}

TEST_F(FocusedKeyEventPosterTest, APasteIsPostedOnceTheDesktopHasTheKeys)
{
    m_sender.gate().hold();
    auto posting = m_poster.postPaste(inFront(), WriteTicket(1));
    ASSERT_TRUE(waitUntil([this] { return m_sender.gate().waiting() == 1; }));
    EXPECT_FALSE(posting.isReady());
    m_sender.gate().open();
    EXPECT_EQ(await(std::move(posting)), PostResult::posted);
}

} // namespace

} // namespace tessly::test
