#pragma once

#include "KeyEventPoster.h"
#include "TestSupport.h"
#include "Workspace.h"

#include <gtest/gtest.h>

#include <memory>

namespace tessly::test {

/// What every desktop does with the keys of a paste. `Subject` has
///   KeyEventPoster& poster();
///   void endPoster();
///   Workspace& workspace();
///   void show(QString id);          // another program with this id shows a window, which comes to
///                                   // the front
///   void bringToFront(QString id);  // the user does
///   void close(QString id);         // the program closes its window
///   int pastesSeenBy(QString id);   // how often it was told to paste
///   void holdKeys();                // from now on, posting waits for something outside
///   void letKeysGo();               // no more
///   void replaceContent();          // from now on, what was written is not on the clipboard
template <typename Subject>
class KeyEventPosterContract : public testing::Test
{
protected:
    using Application = std::shared_ptr<RunningApplication>;

    KeyEventPoster& poster() { return m_subject.poster(); }

    /// The application with this id, once it is in front and active.
    Application inFront(const QString& id)
    {
        Application front;
        EXPECT_TRUE(waitUntil([&] {
            front = m_subject.workspace().frontmostApplication();
            return front && front->bundleIdentifier() == id && front->isActive();
        })) << id.toStdString();
        return front;
    }

    Application shown(const QString& id)
    {
        m_subject.show(id);
        return inFront(id);
    }

    const QString editor = QStringLiteral("Editor");
    const QString sketcher = QStringLiteral("Sketcher");
    Subject m_subject;
};

TYPED_TEST_SUITE_P(KeyEventPosterContract);

TYPED_TEST_P(KeyEventPosterContract, AccessThatWasGrantedIsThere)
{
    EXPECT_EQ(this->poster().requestAccess(), this->poster().isAllowed());
}

TYPED_TEST_P(KeyEventPosterContract, TheTargetInFrontIsToldToPasteOnce)
{
    const auto editor = this->shown(this->editor);
    EXPECT_EQ(await(this->poster().postPaste(editor, WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), 1);
}

TYPED_TEST_P(KeyEventPosterContract, PastesFollowOneAnother)
{
    const auto editor = this->shown(this->editor);
    auto first = this->poster().postPaste(editor, WriteTicket(1));
    auto second = this->poster().postPaste(editor, WriteTicket(1));
    EXPECT_EQ(await(std::move(second)), PostResult::posted);
    EXPECT_EQ(await(std::move(first)), PostResult::posted);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), 2);
}

TYPED_TEST_P(KeyEventPosterContract, ATargetThatIsNotInFrontGetsNoKeysNorDoesAnyoneElse)
{
    const auto editor = this->shown(this->editor);
    this->shown(this->sketcher);
    EXPECT_EQ(
        await(this->poster().postPaste(editor, WriteTicket(1))), PostResult::targetNotInFront);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), 0);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->sketcher), 0);

    this->m_subject.bringToFront(this->editor);
    this->inFront(this->editor);
    EXPECT_EQ(await(this->poster().postPaste(editor, WriteTicket(1))), PostResult::posted);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), 1);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->sketcher), 0);
}

TYPED_TEST_P(KeyEventPosterContract, ATargetThatLeavesTheFrontMeanwhileGetsNoKeys)
{
    const auto editor = this->shown(this->editor);
    this->m_subject.holdKeys();
    auto posting = this->poster().postPaste(editor, WriteTicket(1));
    this->shown(this->sketcher);
    EXPECT_FALSE(posting.isReady() && this->m_subject.pastesSeenBy(this->editor) > 0);
    this->m_subject.letKeysGo();
    EXPECT_EQ(await(std::move(posting)), PostResult::targetNotInFront);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), 0);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->sketcher), 0);
}

TYPED_TEST_P(KeyEventPosterContract, ATargetThatEndsMeanwhileIsNotInFront)
{
    const auto editor = this->shown(this->editor);
    this->m_subject.holdKeys();
    auto posting = this->poster().postPaste(editor, WriteTicket(1));
    this->m_subject.close(this->editor);
    this->m_subject.letKeysGo();
    EXPECT_EQ(await(std::move(posting)), PostResult::targetNotInFront);
    EXPECT_EQ(
        await(this->poster().postPaste(editor, WriteTicket(1))), PostResult::targetNotInFront);
}

TYPED_TEST_P(KeyEventPosterContract, WithoutTheContentNobodyIsTold)
{
    const auto editor = this->shown(this->editor);
    this->m_subject.replaceContent();
    EXPECT_EQ(await(this->poster().postPaste(editor, WriteTicket(1))), PostResult::contentReplaced);
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), 0);
}

TYPED_TEST_P(KeyEventPosterContract, ItMayGoWhileAPasteWaitsAndTheAnswerStillComes)
{
    const auto editor = this->shown(this->editor);
    this->m_subject.holdKeys();
    auto posting = this->poster().postPaste(editor, WriteTicket(1));
    this->m_subject.endPoster();
    this->m_subject.letKeysGo();
    const PostResult result = await(std::move(posting));
    EXPECT_EQ(this->m_subject.pastesSeenBy(this->editor), result == PostResult::posted ? 1 : 0);
}

REGISTER_TYPED_TEST_SUITE_P(
    KeyEventPosterContract, AccessThatWasGrantedIsThere, TheTargetInFrontIsToldToPasteOnce,
    PastesFollowOneAnother, ATargetThatIsNotInFrontGetsNoKeysNorDoesAnyoneElse,
    ATargetThatLeavesTheFrontMeanwhileGetsNoKeys, ATargetThatEndsMeanwhileIsNotInFront,
    WithoutTheContentNobodyIsTold, ItMayGoWhileAPasteWaitsAndTheAnswerStillComes);

} // namespace tessly::test
