#include "Presentation.h"

#include "QtPrinting.h"

#include <QDateTime>
#include <QLocale>

#include <gtest/gtest.h>
#include <unicode/locid.h>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

Clip textClip()
{
    ClipPayload::Fields fields;
    fields.plainText = "hello";
    Clip clip;
    clip.payload = ClipPayload(fields);
    return clip;
}

/// Seconds since 1970 of a moment of local time.
double at(int year, int month, int day, int hour = 12, int minute = 0)
{
    QDateTime moment = QDate(year, month, day).startOfDay();
    moment.setTime(QTime(hour, minute));
    return static_cast<double>(moment.toSecsSinceEpoch());
}

TEST(Presentation, EveryKindHasItsTitleAndSymbol)
{
    EXPECT_EQ(kindTitle(ClipKind::text), u"Text"_s);
    EXPECT_EQ(kindTitle(ClipKind::richText), u"Rich Text"_s);
    EXPECT_EQ(kindTitle(ClipKind::image), u"Image"_s);
    EXPECT_EQ(kindTitle(ClipKind::files), u"Files"_s);
    EXPECT_EQ(kindTitle(ClipKind::link), u"Link"_s);
    EXPECT_EQ(kindSymbol(ClipKind::text), u"text.alignleft"_s);
    EXPECT_EQ(kindSymbol(ClipKind::richText), u"textformat"_s);
    EXPECT_EQ(kindSymbol(ClipKind::image), u"photo"_s);
    EXPECT_EQ(kindSymbol(ClipKind::files), u"doc.on.doc"_s);
    EXPECT_EQ(kindSymbol(ClipKind::link), u"link"_s);
}

TEST(Presentation, ShortAgesAreWholeUnitsGoneBy)
{
    const double now = at(2024, 5, 17);
    EXPECT_EQ(relativeDate(now, now), u"now"_s);
    EXPECT_EQ(relativeDate(now - 0.9, now), u"now"_s);
    EXPECT_EQ(relativeDate(now - 1, now), u"1 second ago"_s);
    EXPECT_EQ(relativeDate(now - 59.9, now), u"59 seconds ago"_s);
    EXPECT_EQ(relativeDate(now - 60, now), u"1 minute ago"_s);
    EXPECT_EQ(relativeDate(now - 3 * 60 - 59, now), u"3 minutes ago"_s);
    EXPECT_EQ(relativeDate(now - 3600, now), u"1 hour ago"_s);
    EXPECT_EQ(relativeDate(now - 23.99 * 3600, now), u"23 hours ago"_s);
}

TEST(Presentation, DaysAreCountedByTheCalendarAndNamed)
{
    const double now = at(2024, 5, 17, 9);
    EXPECT_EQ(relativeDate(at(2024, 5, 16, 9), now), u"yesterday"_s);
    EXPECT_EQ(relativeDate(at(2024, 5, 16, 1), now), u"yesterday"_s);
    EXPECT_EQ(relativeDate(at(2024, 5, 15, 23), now), u"2 days ago"_s) << "34 hours";
    EXPECT_EQ(relativeDate(at(2024, 5, 11), now), u"6 days ago"_s);
}

TEST(Presentation, LongAgesAreWeeksMonthsAndYears)
{
    const double now = at(2024, 5, 17);
    EXPECT_EQ(relativeDate(at(2024, 5, 10), now), u"last week"_s);
    EXPECT_EQ(relativeDate(at(2024, 5, 4), now), u"last week"_s);
    EXPECT_EQ(relativeDate(at(2024, 5, 3), now), u"2 weeks ago"_s);
    EXPECT_EQ(relativeDate(at(2024, 4, 18), now), u"4 weeks ago"_s);
    EXPECT_EQ(relativeDate(at(2024, 4, 17), now), u"last month"_s);
    EXPECT_EQ(relativeDate(at(2023, 12, 18), now), u"4 months ago"_s);
    EXPECT_EQ(relativeDate(at(2023, 5, 18), now), u"11 months ago"_s);
    EXPECT_EQ(relativeDate(at(2023, 5, 17), now), u"last year"_s);
    EXPECT_EQ(relativeDate(at(2014, 5, 17), now), u"10 years ago"_s);
    EXPECT_EQ(relativeDate(at(2024, 1, 31), at(2024, 2, 28)), u"4 weeks ago"_s);
    EXPECT_EQ(relativeDate(at(2024, 1, 31), at(2024, 2, 29)), u"last month"_s)
        << "the last day of a shorter month completes a month";
}

TEST(Presentation, AClockThatWasSetBackGivesTimesToCome)
{
    const double now = at(2024, 5, 17);
    EXPECT_EQ(relativeDate(now + 0.5, now), u"now"_s);
    EXPECT_EQ(relativeDate(now + 120, now), u"in 2 minutes"_s);
    EXPECT_EQ(relativeDate(at(2024, 5, 18, 13), now), u"tomorrow"_s);
}

TEST(Presentation, TheLanguageIsThatOfTheOtherTextsWhateverTheUsersIs)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale::getGermany(), status);
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const double now = at(2024, 5, 17);
    EXPECT_EQ(relativeDate(now - 180, now), u"3 minutes ago"_s);
    EXPECT_EQ(relativeDate(at(2024, 5, 16), now), u"yesterday"_s);
    EXPECT_EQ(byteCount(1'234'567), u"1.2 MB"_s);
}

TEST(Presentation, MetadataJoinsKindSourceAgeAndCopies)
{
    const double now = at(2024, 5, 17);
    Clip clip = textClip();
    clip.sourceAppName = u"Files"_s;
    clip.lastUsedAt = now - 180;
    clip.copyCount = 2;
    EXPECT_EQ(metadataLine(clip, now), u"Text • Files • 3 minutes ago • copied 2×"_s);
    clip.copyCount = 12000;
    EXPECT_EQ(metadataLine(clip, now), u"Text • Files • 3 minutes ago • copied 12000×"_s);
}

TEST(Presentation, MetadataHasNoPieceForASingleCopy)
{
    const double now = at(2024, 5, 17);
    Clip clip = textClip();
    clip.sourceAppName = u"Files"_s;
    clip.lastUsedAt = now;
    clip.copyCount = 1;
    EXPECT_EQ(metadataLine(clip, now), u"Text • Files • now"_s);
}

TEST(Presentation, MetadataHasNoEmptyPieceForAMissingSource)
{
    const double now = at(2024, 5, 17);
    Clip clip = textClip();
    clip.lastUsedAt = now;
    EXPECT_EQ(metadataLine(clip, now), u"Text • now"_s);
    clip.sourceAppName = QString();
    EXPECT_EQ(metadataLine(clip, now), u"Text • now"_s);
}

TEST(Presentation, MetadataTakesAPercentSignInANameForWhatItIs)
{
    const double now = at(2024, 5, 17);
    Clip clip = textClip();
    clip.sourceAppName = u"100 %1"_s;
    clip.lastUsedAt = now;
    clip.copyCount = 2;
    EXPECT_EQ(metadataLine(clip, now), u"Text • 100 %1 • now • copied 2×"_s);
}

TEST(Presentation, TenPositionsHaveTheirDigits)
{
    EXPECT_EQ(shortcutLabel(1), u"\u2325\u21E71"_s);
    EXPECT_EQ(shortcutLabel(9), u"\u2325\u21E79"_s);
    EXPECT_EQ(shortcutLabel(10), u"\u2325\u21E70"_s);
}

TEST(Presentation, KeyCapsAreNamedAsOnThisKeyboard)
{
    EXPECT_EQ(keyNames(u"⌘P"_s), u"Ctrl+P"_s);
    EXPECT_EQ(keyNames(u"⇧↩"_s), u"Shift+Return"_s);
    EXPECT_EQ(keyNames(u"↩"_s), u"Return"_s);
    EXPECT_EQ(keyNames(shortcutLabel(3)), u"Alt+Shift+3"_s);
    EXPECT_EQ(keyNames(u"⌘⌫"_s), u"Ctrl+Backspace"_s);
    EXPECT_EQ(keyNames({}), QString());
}

TEST(Presentation, KeyCapsThatNameARangeKeepIt)
{
    EXPECT_EQ(keyCapNames({u"⌥"_s, u"⇧"_s, u"1…9"_s}), u"Alt+Shift+1…9"_s);
    EXPECT_EQ(keyCapNames({u"⌘"_s, u"P"_s}), u"Ctrl+P"_s);
    EXPECT_EQ(keyCapNames({}), QString());
}

TEST(Presentation, SizesOfFilesAreToldInDecimalUnits)
{
    EXPECT_EQ(byteCount(0), u"Zero KB"_s);
    EXPECT_EQ(byteCount(1), u"1 byte"_s);
    EXPECT_EQ(byteCount(2), u"2 bytes"_s);
    EXPECT_EQ(byteCount(999), u"999 bytes"_s);
    EXPECT_EQ(byteCount(1000), u"1 KB"_s);
    EXPECT_EQ(byteCount(4096), u"4 KB"_s);
    EXPECT_EQ(byteCount(4500), u"5 KB"_s);
    EXPECT_EQ(byteCount(999'499), u"999 KB"_s);
}

TEST(Presentation, LargerFilesAreToldMoreExactly)
{
    EXPECT_EQ(byteCount(999'500), u"1 MB"_s) << "never a thousand of a smaller unit";
    EXPECT_EQ(byteCount(1'000'000), u"1 MB"_s) << "nothing after the point, and no point";
    EXPECT_EQ(byteCount(1'234'567), u"1.2 MB"_s);
    EXPECT_EQ(byteCount(10'000'000), u"10 MB"_s);
    EXPECT_EQ(byteCount(200'040'000), u"200 MB"_s);
    EXPECT_EQ(byteCount(999'960'000), u"1 GB"_s);
    EXPECT_EQ(byteCount(1'234'567'890), u"1.23 GB"_s);
    EXPECT_EQ(byteCount(2'500'000'000), u"2.5 GB"_s);
    EXPECT_EQ(byteCount(3'210'000'000'000), u"3.21 TB"_s);
}

TEST(Presentation, TheCountIsAlwaysOfItems)
{
    EXPECT_EQ(itemCount(0), u"0 items"_s);
    EXPECT_EQ(itemCount(1), u"1 items"_s);
    EXPECT_EQ(itemCount(10000), u"10000 items"_s);
}

TEST(Presentation, ADisplayLineHasNothingThatBreaksIt)
{
    EXPECT_EQ(displayLine(u"plain text"_s), u"plain text"_s);
    EXPECT_EQ(displayLine(u"a\tb\nc\rd\u2028e\u2029f\u0085g\vh\fi"_s), u"a b c d e f g h i"_s);
    EXPECT_EQ(displayLine(u"a\u0000b\u001Bc\u007Fd"_s), u"a b c d"_s);
    EXPECT_EQ(displayLine(u"left\u202Ethgir\u202C \u2066x\u2069"_s), u"leftthgir x"_s);
    EXPECT_EQ(
        displayLine(u"שלום 👩‍👩‍👧 é"_s), u"שלום 👩‍👩‍👧 é"_s);
}

} // namespace
} // namespace tessly
