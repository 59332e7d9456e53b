#include "PreviewLine.h"

#include <gtest/gtest.h>

namespace tessly::test {

namespace {

QString repeated(const QString& text, int times)
{
    return text.repeated(times);
}

} // namespace

TEST(PreviewLine, isAShortPreviewItself)
{
    EXPECT_EQ(previewLine(""), QString());
    EXPECT_EQ(previewLine("caf\xc3\xa9"), QStringLiteral("café"));
    const QString longest = repeated(QStringLiteral("é"), previewLineLength);
    EXPECT_EQ(previewLine(longest.toUtf8()), longest);
}

TEST(PreviewLine, isTheBeginningOfALongPreview)
{
    EXPECT_EQ(previewLine(QByteArray(25'000'000, 'x')), QString(previewLineLength, u'x'));
}

TEST(PreviewLine, isCutBetweenGraphemeClusters)
{
    // A family of four is one cluster of eleven units, a flag one of four, an accented letter two.
    for (const QString& cluster :
         {QStringLiteral("👨‍👩‍👧‍👦"), QStringLiteral("🇫🇷"),
          QStringLiteral("e\u0301"), QStringLiteral("😀"), QStringLiteral("각"),
          QStringLiteral("\r\n")}) {
        for (int before = 0; before < 12; ++before) {
            const QString start(before, u'x');
            const QString line = previewLine((start + repeated(cluster, 500)).toUtf8());
            const qsizetype clusters = (previewLineLength - before) / cluster.size();
            EXPECT_EQ(line, start + repeated(cluster, static_cast<int>(clusters)))
                << cluster.toStdString() << " after " << before;
        }
    }
}

TEST(PreviewLine, cutsAnEndlessClusterBetweenCodePoints)
{
    const QString accents = u'e' + repeated(QStringLiteral("\u0301"), 10'000);
    EXPECT_EQ(previewLine(accents.toUtf8()), accents.first(previewLineLength));
    // Variation selectors of two units each, so that the limit falls inside one.
    const QString selectors = QStringLiteral("xe") + repeated(QStringLiteral("\U000E0100"), 10'000);
    const QString joined = u'e' + repeated(QStringLiteral("\U000E0100"), 10'000);
    EXPECT_EQ(previewLine(joined.toUtf8()), joined.first(previewLineLength - 1));
    EXPECT_EQ(previewLine(selectors.toUtf8()), QStringLiteral("x"));
}

} // namespace tessly::test
