#include "LineReader.h"

#include "FileError.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

#include <unistd.h>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace tessly::test {
namespace {

using Line = LineReader::Line;

class LineReaderTest : public testing::Test
{
protected:
    /// A reader of a file with these bytes.
    LineReader reader(const QByteArray& bytes, qsizetype longest = 100)
    {
        EXPECT_TRUE(m_file.isOpen() || m_file.open());
        m_file.resize(0);
        m_file.seek(0);
        m_file.write(bytes);
        m_file.flush();
        m_file.seek(0);
        return {m_file.handle(), u"the file"_s, longest};
    }
    /// The lines that are read; "too long" for one that is.
    std::vector<std::string> lines(const QByteArray& bytes, qsizetype longest = 100)
    {
        LineReader lines = reader(bytes, longest);
        std::vector<std::string> found;
        for (;;) {
            QByteArray text = "kept ";
            const Line line = lines.next(text);
            if (line == Line::none) {
                EXPECT_EQ(text, "kept ");
                return found;
            }
            EXPECT_EQ(lines.number(), std::ssize(found) + 1);
            found.push_back(line == Line::tooLong ? "too long" : text.mid(5).toStdString());
            EXPECT_TRUE(line == Line::read || text == "kept ");
        }
    }

    QTemporaryFile m_file;
};

TEST_F(LineReaderTest, ReadsOneLineAfterAnother)
{
    EXPECT_THAT(lines("one\n\nthree\n"), ElementsAre("one", "", "three"));
}

TEST_F(LineReaderTest, TheLastLineNeedsNoEnd)
{
    EXPECT_THAT(lines("one\ntwo"), ElementsAre("one", "two"));
}

TEST_F(LineReaderTest, AnotherSeparatorLeavesEndsOfLinesInTheText)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(::pipe(ends.data()), 0);
    ASSERT_EQ(::write(ends[1], "one\ntwo\0three", 13), 13);
    ::close(ends[1]);
    LineReader texts(ends[0], u"a pipe"_s, 100, '\0');
    QByteArray text;
    EXPECT_EQ(texts.next(text), Line::read);
    EXPECT_EQ(text, "one\ntwo");
    text.clear();
    EXPECT_EQ(texts.next(text), Line::read);
    EXPECT_EQ(text, "three");
    EXPECT_EQ(texts.next(text), Line::none);
    ::close(ends[0]);
}

TEST_F(LineReaderTest, OfNothingThereIsNothing)
{
    EXPECT_THAT(lines(""), IsEmpty());
}

TEST_F(LineReaderTest, LinesMayBeLongerThanWhatIsReadAtOnce)
{
    const QByteArray longLine(3'000'000, 'x');
    EXPECT_THAT(
        lines("a\n" + longLine + "\nb\n", 4'000'000),
        ElementsAre("a", longLine.toStdString(), "b"));
}

TEST_F(LineReaderTest, WhatIsTooLongIsLeftOutAndCounted)
{
    EXPECT_THAT(lines("12345\n123456\n1234\n", 5), ElementsAre("12345", "too long", "1234"));
    EXPECT_THAT(
        lines("a\n" + QByteArray(3'000'000, 'x') + "\nb", 2'000'000),
        ElementsAre("a", "too long", "b"));
    EXPECT_THAT(lines("a\n123456", 5), ElementsAre("a", "too long"));
}

TEST_F(LineReaderTest, ReadsWhatAPipeHasSoFar)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(::pipe(ends.data()), 0);
    LineReader lines(ends[0], u"a pipe"_s, 100);
    ASSERT_EQ(::write(ends[1], "one\ntw", 6), 6);
    QByteArray text;
    EXPECT_EQ(lines.next(text), Line::read);
    EXPECT_EQ(text, "one");
    ASSERT_EQ(::write(ends[1], "o\n", 2), 2);
    text.clear();
    EXPECT_EQ(lines.next(text), Line::read);
    EXPECT_EQ(text, "two");
    ::close(ends[1]);
    EXPECT_EQ(lines.next(text), Line::none);
    ::close(ends[0]);
}

TEST_F(LineReaderTest, WhatCannotBeReadIsAnError)
{
    LineReader lines(-1, u"the file"_s, 100);
    QByteArray text;
    try {
        (void)lines.next(text);
        FAIL() << "it was read";
    } catch (const FileError& error) {
        EXPECT_THAT(error.what(), HasSubstr("Could not read “the file”"));
    }
}

} // namespace
} // namespace tessly::test
