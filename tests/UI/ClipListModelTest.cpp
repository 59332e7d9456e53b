#include "ClipListModel.h"

#include "QtPrinting.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

constexpr double now = 1'700'000'000;

/// A clip of the text `name`; clips of the same name have the same id.
Clip clip(char name)
{
    ClipPayload::Fields fields;
    fields.plainText = QByteArray(1, name);
    Clip clip;
    clip.id = QUuid(static_cast<uint>(name), 0, 0, 0, 0, 0, 0, 0, 0, 0, 1);
    clip.createdAt = now - 60;
    clip.lastUsedAt = now - 60;
    clip.payload = ClipPayload(fields);
    return clip;
}

std::vector<Clip> clips(std::string_view names)
{
    std::vector<Clip> clips;
    for (const char name : names) {
        clips.push_back(clip(name));
    }
    return clips;
}

/// Records what a view would be told.
class ClipListModelTest : public testing::Test
{
protected:
    ClipListModelTest()
    {
        const auto roles = [this](const QList<int>& changed) {
            QStringList names;
            for (const int role : changed) {
                names.append(QString::fromUtf8(model.roleNames().value(role)));
            }
            return names.join(u'+');
        };
        QObject::connect(
            &model, &QAbstractItemModel::rowsInserted, &model,
            [this](const QModelIndex&, int first, int last) {
                operations.append(u"insert %1-%2"_s.arg(first).arg(last));
            });
        QObject::connect(
            &model, &QAbstractItemModel::rowsRemoved, &model,
            [this](const QModelIndex&, int first, int last) {
                operations.append(u"remove %1-%2"_s.arg(first).arg(last));
            });
        QObject::connect(
            &model, &QAbstractItemModel::rowsMoved, &model,
            [this](const QModelIndex&, int first, int last, const QModelIndex&, int to) {
                operations.append(u"move %1-%2 before %3"_s.arg(first).arg(last).arg(to));
            });
        QObject::connect(
            &model, &QAbstractItemModel::dataChanged, &model,
            [this, roles](const QModelIndex& first, const QModelIndex& last, const QList<int>& r) {
                operations.append(
                    u"change %1-%2 %3"_s.arg(first.row()).arg(last.row()).arg(roles(r)));
            });
        QObject::connect(&model, &QAbstractItemModel::modelReset, &model, [this] {
            operations.append(u"reset"_s);
        });
    }

    [[nodiscard]] QStringList setClips(const std::vector<Clip>& list, double time = now)
    {
        operations.clear();
        model.setClips(list, time);
        return operations;
    }

    [[nodiscard]] QVariant data(int row, int role) const
    {
        return model.data(model.index(row), role);
    }

    [[nodiscard]] std::string rows() const
    {
        std::string names;
        for (int row = 0; row < model.rowCount(); ++row) {
            names += data(row, ClipListModel::previewRole).toString().toStdString();
        }
        return names;
    }

    ClipListModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    QStringList operations;
};

TEST_F(ClipListModelTest, TheFirstListIsOneInsertion)
{
    EXPECT_EQ(setClips(clips("abc")), QStringList{u"insert 0-2"_s});
    EXPECT_EQ(rows(), "abc");
}

TEST_F(ClipListModelTest, TheSameListIsNoOperation)
{
    model.setClips(clips("abc"), now);
    EXPECT_EQ(setClips(clips("abc")), QStringList{});
}

TEST_F(ClipListModelTest, ANewClipIsOneInsertionInItsPlace)
{
    model.setClips(clips("abc"), now);
    EXPECT_EQ(setClips(clips("xabc")), QStringList{u"insert 0-0"_s});
    EXPECT_EQ(setClips(clips("xaybc")), QStringList{u"insert 2-2"_s});
    EXPECT_EQ(setClips(clips("xaybcz")), QStringList{u"insert 5-5"_s});
    EXPECT_EQ(rows(), "xaybcz");
}

TEST_F(ClipListModelTest, ADeletedClipIsOneRemoval)
{
    model.setClips(clips("abc"), now);
    EXPECT_EQ(setClips(clips("ac")), QStringList{u"remove 1-1"_s});
    EXPECT_EQ(setClips({}), QStringList{u"remove 0-1"_s});
}

TEST_F(ClipListModelTest, NeighboursAreRemovedTogether)
{
    model.setClips(clips("abcdefg"), now);
    EXPECT_EQ(setClips(clips("adg")), (QStringList{u"remove 4-5"_s, u"remove 1-2"_s}));
    EXPECT_EQ(rows(), "adg");
}

TEST_F(ClipListModelTest, AFullListThatGainsOneLosesItsLast)
{
    model.setClips(clips("abcd"), now);
    EXPECT_EQ(setClips(clips("xabc")), (QStringList{u"remove 3-3"_s, u"insert 0-0"_s}));
}

TEST_F(ClipListModelTest, AClipThatComesToTheTopIsOneMove)
{
    model.setClips(clips("abcd"), now);
    EXPECT_EQ(setClips(clips("cabd")), QStringList{u"move 2-2 before 0"_s});
    EXPECT_EQ(rows(), "cabd");
}

TEST_F(ClipListModelTest, AClipThatGoesDownIsOneMove)
{
    model.setClips(clips("abcd"), now);
    EXPECT_EQ(setClips(clips("bcda")), QStringList{u"move 0-0 before 4"_s});
    EXPECT_EQ(setClips(clips("cbda")), QStringList{u"move 0-0 before 2"_s});
    EXPECT_EQ(rows(), "cbda");
}

TEST_F(ClipListModelTest, NeighboursMoveTogether)
{
    model.setClips(clips("abcdef"), now);
    EXPECT_EQ(setClips(clips("deabcf")), QStringList{u"move 3-4 before 0"_s});
    EXPECT_EQ(rows(), "deabcf");
}

TEST_F(ClipListModelTest, RemovalMoveAndInsertionComeTogether)
{
    model.setClips(clips("abcde"), now);
    EXPECT_EQ(
        setClips(clips("daxc")),
        (QStringList{u"remove 4-4"_s, u"remove 1-1"_s, u"move 2-2 before 0"_s, u"insert 2-2"_s}));
    EXPECT_EQ(rows(), "daxc");
}

TEST_F(ClipListModelTest, AnyListFollowsAnyOther)
{
    std::mt19937 random(20240517);
    std::string names = "abcdefghijkl";
    for (int round = 0; round < 500; ++round) {
        std::ranges::shuffle(names, random);
        const auto count = random() % (names.size() + 1);
        const std::string wanted = names.substr(0, count);
        model.setClips(clips(wanted), now);
        ASSERT_EQ(rows(), wanted);
    }
}

TEST_F(ClipListModelTest, APinChangesThePinAlone)
{
    auto list = clips("abc");
    model.setClips(list, now);
    list[1].isPinned = true;
    list[1].pinOrder = 7;
    EXPECT_EQ(setClips(list), QStringList{u"change 1-1 isPinned"_s});
    EXPECT_TRUE(data(1, ClipListModel::isPinnedRole).toBool());
}

TEST_F(ClipListModelTest, ACopyMadeAgainChangesTheMetadataAlone)
{
    auto list = clips("abc");
    model.setClips(list, now);
    list[0].copyCount = 2;
    EXPECT_EQ(setClips(list), QStringList{u"change 0-0 metadata"_s});
    EXPECT_EQ(data(0, ClipListModel::metadataRole), u"Text • 1 minute ago • copied 2×"_s);
}

TEST_F(ClipListModelTest, WhatIsNotShownChangesNothing)
{
    auto list = clips("abc");
    model.setClips(list, now);
    list[0].createdAt -= 5;
    list[0].sourceBundleID = u"org.example"_s;
    EXPECT_EQ(setClips(list), QStringList{});
    EXPECT_EQ(*model.clip(0), list[0]) << "the row still has what is new";
}

TEST_F(ClipListModelTest, TimeChangesTheAgesThatReadDifferently)
{
    auto list = clips("ab");
    list[1].lastUsedAt = now - 3600;
    model.setClips(list, now);
    operations.clear();
    model.setNow(now + 60);
    EXPECT_EQ(operations, QStringList{u"change 0-0 metadata"_s});
    EXPECT_EQ(data(0, ClipListModel::metadataRole), u"Text • 2 minutes ago"_s);
}

TEST_F(ClipListModelTest, NoRowHasAKeyAtFirst)
{
    model.setClips(clips("ab"), now);
    EXPECT_EQ(data(0, ClipListModel::shortcutLabelRole), QString());
    EXPECT_EQ(data(0, ClipListModel::shortcutNameRole), QString());
}

TEST_F(ClipListModelTest, TheFirstTenRowsHaveKeys)
{
    model.setShortcuts(ClipListModel::Shortcuts::shown);
    model.setClips(clips("abcdefghijkl"), now);
    EXPECT_EQ(data(0, ClipListModel::shortcutLabelRole), u"⌥⇧1"_s);
    EXPECT_EQ(data(8, ClipListModel::shortcutLabelRole), u"⌥⇧9"_s);
    EXPECT_EQ(data(9, ClipListModel::shortcutLabelRole), u"⌥⇧0"_s);
    EXPECT_EQ(data(10, ClipListModel::shortcutLabelRole), QString());
    EXPECT_EQ(data(9, ClipListModel::shortcutNameRole), u"Alt+Shift+0"_s);
}

TEST_F(ClipListModelTest, TheSettingShowsAndHidesTheKeysAlone)
{
    model.setClips(clips("ab"), now);
    operations.clear();
    model.setShortcuts(ClipListModel::Shortcuts::shown);
    const QStringList expected = {
        u"change 0-0 shortcutLabel+shortcutName"_s, u"change 1-1 shortcutLabel+shortcutName"_s};
    EXPECT_EQ(operations, expected);
    operations.clear();
    model.setShortcuts(ClipListModel::Shortcuts::hidden);
    EXPECT_EQ(operations, expected);
}

TEST_F(ClipListModelTest, KeysStayWithTheirPositions)
{
    model.setShortcuts(ClipListModel::Shortcuts::shown);
    model.setClips(clips("ab"), now);
    EXPECT_EQ(
        setClips(clips("xab")), (QStringList{
                                    u"insert 0-0"_s, u"change 1-1 shortcutLabel+shortcutName"_s,
                                    u"change 2-2 shortcutLabel+shortcutName"_s}));
    EXPECT_EQ(data(0, ClipListModel::shortcutLabelRole), u"⌥⇧1"_s);
    EXPECT_EQ(data(2, ClipListModel::shortcutLabelRole), u"⌥⇧3"_s);
}

TEST_F(ClipListModelTest, RowsTellWhatTheyShow)
{
    ClipPayload::Fields fields;
    fields.plainText = "two\nlines\rand\tmore";
    fields.rtf = "{}";
    Clip rich = clip('r');
    rich.payload = ClipPayload(fields);
    rich.sourceAppName = u"Writer\n2"_s;
    model.setClips({rich}, now);
    EXPECT_EQ(data(0, ClipListModel::clipIDRole), rich.id.toString(QUuid::WithoutBraces));
    EXPECT_EQ(data(0, ClipListModel::previewRole), u"two lines and more"_s);
    EXPECT_EQ(data(0, ClipListModel::metadataRole), u"Rich Text • Writer 2 • 1 minute ago"_s);
    EXPECT_EQ(data(0, ClipListModel::kindTitleRole), u"Rich Text"_s);
    EXPECT_EQ(data(0, ClipListModel::kindSymbolRole), u"textformat"_s);
    EXPECT_EQ(data(0, ClipListModel::isPinnedRole), false);
}

TEST_F(ClipListModelTest, AHugeTextIsShownByItsBeginning)
{
    ClipPayload::Fields fields;
    fields.plainText = QByteArray(25 * 1024 * 1024, 'x');
    Clip huge = clip('h');
    huge.payload = ClipPayload(fields);
    model.setClips({huge}, now);
    const QString preview = data(0, ClipListModel::previewRole).toString();
    EXPECT_GE(preview.size(), 100);
    EXPECT_LE(preview.size(), 2000);
}

TEST_F(ClipListModelTest, RowsAndClipsAreFoundByEachOther)
{
    model.setClips(clips("abc"), now);
    EXPECT_EQ(model.rowOf(clip('b').id), 1);
    EXPECT_EQ(model.rowOf(clip('x').id), -1);
    EXPECT_EQ(model.rowOf(QUuid()), -1);
    ASSERT_NE(model.clip(2), nullptr);
    EXPECT_EQ(model.clip(2)->id, clip('c').id);
    EXPECT_EQ(model.clip(3), nullptr);
    EXPECT_EQ(model.clip(-1), nullptr);
}

} // namespace
} // namespace tessly
