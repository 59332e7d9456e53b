#include "StatusMenuLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::SizeIs;

namespace tessly::test {

namespace {

StatusMenuItem line(const QString& title, const QString& action, const QString& keyText = {})
{
    return {.title = title, .action = action, .keyText = keyText};
}

const StatusMenuItem separator = {.isSeparator = true};

std::vector<StatusMenuItem> menu(const QString& pauseTitle)
{
    return {
        line(u"Open"_s, u"open"_s), line(pauseTitle, u"pause"_s), separator,
        line(u"Quit"_s, u"quit"_s, u"q"_s)};
}

class StatusMenuLayoutTest : public testing::Test
{
protected:
    StatusMenuLayout m_layout;
};

TEST_F(StatusMenuLayoutTest, TheSameMenuAgainIsNoChange)
{
    EXPECT_TRUE(m_layout.update(menu(u"Pause"_s)));
    EXPECT_EQ(m_layout.revision(), 1U);
    EXPECT_FALSE(m_layout.update(menu(u"Pause"_s)));
    EXPECT_EQ(m_layout.revision(), 1U);
    EXPECT_TRUE(m_layout.update(menu(u"Resume"_s)));
    EXPECT_EQ(m_layout.revision(), 2U);
}

TEST_F(StatusMenuLayoutTest, AnEmptyMenuIsAMenu)
{
    EXPECT_TRUE(m_layout.update({}));
    EXPECT_THAT(m_layout.lines(), SizeIs(0));
    EXPECT_FALSE(m_layout.update({}));
}

TEST_F(StatusMenuLayoutTest, LinesHaveWhatTheyNeedAndNoMore)
{
    auto items = menu(u"Pause"_s);
    items[1].isEnabled = false;
    m_layout.update(items);
    const auto& lines = m_layout.lines();
    ASSERT_THAT(lines, SizeIs(4));
    EXPECT_EQ(m_layout.properties(lines[0]), (QVariantMap{{u"label"_s, u"Open"_s}}));
    EXPECT_EQ(
        m_layout.properties(lines[1]),
        (QVariantMap{{u"label"_s, u"Pause"_s}, {u"enabled"_s, false}}));
    EXPECT_EQ(m_layout.properties(lines[2]), (QVariantMap{{u"type"_s, u"separator"_s}}));
    const auto quit = m_layout.properties(lines[3]);
    ASSERT_TRUE(quit);
    EXPECT_EQ(
        quit->value(u"shortcut"_s).value<QList<QStringList>>(),
        (QList<QStringList>{{u"Control"_s, u"q"_s}}));
    EXPECT_EQ(
        m_layout.properties(StatusMenuLayout::root),
        (QVariantMap{{u"children-display"_s, u"submenu"_s}}));
    EXPECT_EQ(m_layout.properties(99), std::nullopt);
}

TEST_F(StatusMenuLayoutTest, AnUnderscoreInATitleIsShown)
{
    m_layout.update({line(u"a_b"_s, u"x"_s)});
    EXPECT_EQ(m_layout.properties(m_layout.lines()[0])->value(u"label"_s), u"a__b"_s);
}

TEST_F(StatusMenuLayoutTest, OnlyEnabledLinesWithAnActionCanBeChosen)
{
    auto items = menu(u"Pause"_s);
    items[1].isEnabled = false;
    m_layout.update(items);
    const auto& lines = m_layout.lines();
    EXPECT_EQ(m_layout.action(lines[0]), u"open"_s);
    EXPECT_EQ(m_layout.action(lines[1]), std::nullopt);
    EXPECT_EQ(m_layout.action(lines[2]), std::nullopt);
    EXPECT_EQ(m_layout.action(StatusMenuLayout::root), std::nullopt);
    EXPECT_EQ(m_layout.action(99), std::nullopt);
}

TEST_F(StatusMenuLayoutTest, ANumberKeepsItsActionWhenTheMenuChanges)
{
    m_layout.update(menu(u"Pause"_s));
    const auto before = m_layout.lines();
    m_layout.update({line(u"Quit"_s, u"quit"_s), separator, line(u"Resume"_s, u"pause"_s)});
    EXPECT_EQ(m_layout.lines()[0], before[3]);
    EXPECT_EQ(m_layout.lines()[2], before[1]);
    // Still on the screen as the menu was.
    EXPECT_EQ(m_layout.action(before[0]), u"open"_s);
    EXPECT_EQ(m_layout.action(before[2]), std::nullopt);
    EXPECT_EQ(m_layout.properties(before[0]), std::nullopt);
}

} // namespace

} // namespace tessly::test
