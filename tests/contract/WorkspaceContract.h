#pragma once

#include "TestSupport.h"
#include "Workspace.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tessly::test {

/// What every desktop tells of the applications on it. `Subject` has
///   Workspace& workspace();
///   void show(QString id);          // another program with this id shows a window, which comes to
///                                   // the front
///   void bringToFront(QString id);  // the user does
///   void close(QString id);         // the program closes its window
template <typename Subject>
class WorkspaceContract : public testing::Test
{
protected:
    using Application = std::shared_ptr<RunningApplication>;

    Workspace& workspace() { return m_subject.workspace(); }

    /// The application with this id, once it is in front and active.
    Application inFront(const QString& id)
    {
        Application front;
        EXPECT_TRUE(waitUntil([&] {
            front = workspace().frontmostApplication();
            return front && front->bundleIdentifier() == id && front->isActive();
        })) << id.toStdString();
        return front;
    }

    Application shown(const QString& id)
    {
        m_subject.show(id);
        return inFront(id);
    }

    /// What was in front in the last hour, the earliest first.
    std::vector<Application> inFrontLately()
    {
        return await(workspace().inFrontDuring(std::chrono::hours(1)));
    }

    const QString editor = QStringLiteral("Editor");
    const QString sketcher = QStringLiteral("Sketcher");
    Subject m_subject;
};

TYPED_TEST_SUITE_P(WorkspaceContract);

TYPED_TEST_P(WorkspaceContract, NothingIsInFrontWithoutApplications)
{
    EXPECT_EQ(this->workspace().frontmostApplication(), nullptr);
}

TYPED_TEST_P(WorkspaceContract, TheApplicationInFrontIsActiveAndStaysTheSame)
{
    const auto editor = this->shown(this->editor);
    ASSERT_NE(editor, nullptr);
    EXPECT_FALSE(editor->isTerminated());
    EXPECT_TRUE(editor->localizedName());
    EXPECT_EQ(this->workspace().frontmostApplication(), editor);
}

TYPED_TEST_P(WorkspaceContract, AnotherThatComesToTheFrontTakesItsPlace)
{
    const auto editor = this->shown(this->editor);
    const auto sketcher = this->shown(this->sketcher);
    ASSERT_NE(sketcher, nullptr);
    EXPECT_NE(sketcher, editor);
    EXPECT_FALSE(editor->isActive());
    EXPECT_FALSE(editor->isTerminated());

    this->m_subject.bringToFront(this->editor);
    this->inFront(this->editor);
    EXPECT_TRUE(editor->isActive());
    EXPECT_FALSE(sketcher->isActive());
}

TYPED_TEST_P(WorkspaceContract, AnApplicationThatIsAskedToComesToTheFront)
{
    const auto editor = this->shown(this->editor);
    const auto sketcher = this->shown(this->sketcher);
    editor->activate();
    this->inFront(this->editor);
    EXPECT_TRUE(editor->isActive());
    EXPECT_FALSE(sketcher->isActive());
    // Asking again changes nothing.
    editor->activate();
    EXPECT_TRUE(editor->isActive());
}

TYPED_TEST_P(WorkspaceContract, AnApplicationWhoseWindowClosesHasEnded)
{
    const auto editor = this->shown(this->editor);
    this->m_subject.close(this->editor);
    EXPECT_TRUE(waitUntil([&] { return editor->isTerminated(); }));
    EXPECT_TRUE(waitUntil([&] { return !this->workspace().frontmostApplication(); }));
    EXPECT_FALSE(editor->isActive());
    editor->activate();
    const auto sketcher = this->shown(this->sketcher);
    EXPECT_TRUE(sketcher->isActive());
    EXPECT_FALSE(editor->isActive());
    EXPECT_TRUE(editor->isTerminated());
    EXPECT_EQ(editor->bundleIdentifier(), this->editor) << "what is known of it stays known";
}

TYPED_TEST_P(WorkspaceContract, AnApplicationMayEndBehindAnother)
{
    const auto editor = this->shown(this->editor);
    const auto sketcher = this->shown(this->sketcher);
    this->m_subject.close(this->editor);
    EXPECT_TRUE(waitUntil([&] { return editor->isTerminated(); }));
    EXPECT_EQ(this->workspace().frontmostApplication(), sketcher);
    EXPECT_TRUE(sketcher->isActive());
}

TYPED_TEST_P(WorkspaceContract, WhatWasInFrontLatelyIsTold)
{
    const auto editor = this->shown(this->editor);
    EXPECT_EQ(this->inFrontLately(), std::vector({editor}));
    const auto sketcher = this->shown(this->sketcher);
    EXPECT_EQ(this->inFrontLately(), std::vector({editor, sketcher}));
    EXPECT_TRUE(sketcher->names().contains(this->sketcher));
}

TYPED_TEST_P(WorkspaceContract, WhatIsInFrontAgainIsToldLast)
{
    const auto editor = this->shown(this->editor);
    const auto sketcher = this->shown(this->sketcher);
    this->m_subject.bringToFront(this->editor);
    this->inFront(this->editor);
    EXPECT_EQ(this->inFrontLately(), std::vector({sketcher, editor}));
}

TYPED_TEST_P(WorkspaceContract, WhatWasInFrontIsToldAlsoOnceItHasEnded)
{
    const auto editor = this->shown(this->editor);
    this->m_subject.close(this->editor);
    ASSERT_TRUE(waitUntil([&] { return !this->workspace().frontmostApplication(); }));
    EXPECT_EQ(
        this->inFrontLately(), (std::vector<std::shared_ptr<RunningApplication>>{editor, nullptr}));
}

TYPED_TEST_P(WorkspaceContract, TellsWhenAnotherComesToTheFront)
{
    int changes = 0;
    this->workspace().setFrontmostChanged([&] { ++changes; });
    const auto editor = this->shown(this->editor);
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
    this->shown(this->sketcher);
    changes = 0;
    this->m_subject.bringToFront(this->editor);
    EXPECT_TRUE(waitUntil([&] { return changes > 0; }));
    this->inFront(this->editor);

    this->workspace().setFrontmostChanged({});
    changes = 0;
    this->m_subject.bringToFront(this->sketcher);
    this->inFront(this->sketcher);
    EXPECT_EQ(changes, 0);
}

REGISTER_TYPED_TEST_SUITE_P(
    WorkspaceContract, NothingIsInFrontWithoutApplications,
    TheApplicationInFrontIsActiveAndStaysTheSame, AnotherThatComesToTheFrontTakesItsPlace,
    AnApplicationThatIsAskedToComesToTheFront, AnApplicationWhoseWindowClosesHasEnded,
    AnApplicationMayEndBehindAnother, WhatWasInFrontLatelyIsTold, WhatIsInFrontAgainIsToldLast,
    WhatWasInFrontIsToldAlsoOnceItHasEnded, TellsWhenAnotherComesToTheFront);

} // namespace tessly::test
