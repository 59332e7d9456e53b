#include "StatusMenu.h"

#include "QtPrinting.h"

#include <gtest/gtest.h>

#include <QSet>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

QStringList described(const std::vector<StatusMenuItem>& items)
{
    QStringList lines;
    for (const StatusMenuItem& item : items) {
        lines.append(
            item.isSeparator ? u"-"_s : item.title + u'|' + item.action + u'|' + item.keyText);
    }
    return lines;
}

TEST(StatusMenuTest, HasItsLinesInOrder)
{
    EXPECT_EQ(
        described(makeStatusMenu(false)), (QStringList{
                                              u"Open Quick Paste|openQuickPaste|"_s,
                                              u"Pause Clipboard Recording|toggleMonitoring|"_s,
                                              u"-"_s,
                                              u"Clear Unpinned History|clearHistory|"_s,
                                              u"Settings…|openSettings|,"_s,
                                              u"-"_s,
                                              u"Quit Tessly|quitApplication|q"_s,
                                          }));
}

TEST(StatusMenuTest, ResumesWhileRecordingIsPaused)
{
    auto expected = makeStatusMenu(false);
    expected[1].title = u"Resume Clipboard Recording"_s;
    EXPECT_EQ(makeStatusMenu(true), expected);
}

TEST(StatusMenuTest, EverythingCanBeChosenButTheSeparators)
{
    QSet<QString> actions;
    for (const StatusMenuItem& item : makeStatusMenu(false)) {
        EXPECT_TRUE(item.isEnabled);
        EXPECT_EQ(item.isSeparator, item.title.isEmpty());
        EXPECT_EQ(item.isSeparator, item.action.isEmpty());
        if (!item.isSeparator) {
            EXPECT_FALSE(actions.contains(item.action)) << "no two share an action";
            actions.insert(item.action);
        }
    }
    EXPECT_EQ(actions.size(), 5);
}

} // namespace
} // namespace tessly
