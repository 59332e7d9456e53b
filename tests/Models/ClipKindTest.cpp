#include "ClipKind.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

TEST(ClipKind, isListedInTheOrderOfTheFilterChips)
{
    QStringList names;
    for (const ClipKind kind : allClipKinds) {
        names.append(rawValue(kind));
    }
    EXPECT_EQ(names, QStringList({u"text"_s, u"richText"_s, u"image"_s, u"files"_s, u"link"_s}));
}

TEST(ClipKind, comesBackFromItsRawValue)
{
    for (const ClipKind kind : allClipKinds) {
        EXPECT_EQ(clipKind(rawValue(kind)), kind);
    }
}

TEST(ClipKind, isNoneForAnUnknownRawValue)
{
    for (const QStringView name : {u"", u"Text", u"text ", u"richtext", u"video"}) {
        EXPECT_EQ(clipKind(name), std::nullopt);
    }
}

} // namespace tessly::test
