#include "HistoryImport.h"

#include "Services/Store/ExportedClips.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

#include <algorithm>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

const QByteArray first = ExportFormat::firstLine();
const QByteArray last = ExportFormat::lastLine();

class HistoryImportTest : public testing::Test
{
protected:
    /// The file is read from its beginning; lines that begin with "x" are refused when they are
    /// added, "p" are there already.
    HistoryImport::Result import(const QByteArray& bytes, qsizetype longest = 20'000'000)
    {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        file.write(bytes);
        file.flush();
        file.seek(0);
        LineReader lines(file.handle(), u"file"_s, longest);
        HistoryImport import(
            lines, [this](const QByteArray& batch) { return add(batch); },
            [this](qint64 line, const QString& reason) {
                m_said.push_back(std::to_string(line) + ": " + reason.toStdString());
            });
        import.run();
        return import.result();
    }
    std::optional<ImportOutcome> add(const QByteArray& batch)
    {
        if (m_failsAt == std::ssize(m_batches)) {
            return std::nullopt;
        }
        m_batches.push_back(batch);
        ImportOutcome outcome;
        QByteArrayList lines = batch.split('\n');
        EXPECT_EQ(lines.takeLast(), "");
        for (qsizetype i = 0; i < lines.size(); ++i) {
            if (lines[i].startsWith('x')) {
                outcome.refused.push_back({i, u"refused "_s + QString::fromUtf8(lines[i])});
            } else {
                ++(lines[i].startsWith('p') ? outcome.present : outcome.added);
            }
        }
        return outcome;
    }

    std::vector<QByteArray> m_batches;
    std::vector<std::string> m_said;
    qsizetype m_failsAt = -1;
};

TEST_F(HistoryImportTest, HandsOnTheEntriesAndCountsThem)
{
    const auto result = import(first + "one\ntwo\n\n \r\np\n" + last);
    EXPECT_THAT(m_batches, ElementsAre("one\ntwo\np\n"));
    EXPECT_THAT(m_said, IsEmpty());
    EXPECT_EQ(result.added, 2);
    EXPECT_EQ(result.present, 1);
    EXPECT_EQ(result.refused, 0);
    EXPECT_TRUE(result.isComplete);
}

TEST_F(HistoryImportTest, OfAnEmptyHistoryNothingIsHandedOn)
{
    EXPECT_TRUE(import(first + last).isComplete);
    EXPECT_THAT(m_batches, IsEmpty());
    EXPECT_THAT(m_said, IsEmpty());
}

TEST_F(HistoryImportTest, SaysByItsNumberInTheFileWhichLineIsRefused)
{
    const auto result = import("\n" + first + "one\n\nx1\ntwo\nx2\n" + last, 300);
    EXPECT_THAT(m_said, ElementsAre("5: refused x1", "7: refused x2"));
    EXPECT_EQ(result.refused, 2);
    EXPECT_TRUE(result.isComplete);
}

TEST_F(HistoryImportTest, ALineThatIsTooLongIsRefusedInItsPlace)
{
    const auto result = import(first + "x1\n" + QByteArray(301, 'y') + "\nx2\nthree\n" + last, 300);
    EXPECT_THAT(m_said, ElementsAre("2: refused x1", "3: it is too long", "4: refused x2"));
    EXPECT_EQ(result.added, 1);
    EXPECT_EQ(result.refused, 3);
    EXPECT_TRUE(result.isComplete);
}

TEST_F(HistoryImportTest, HandsOnALittleAtATime)
{
    QByteArray lines;
    for (int i = 0; i < 1200; ++i) {
        lines += "line " + QByteArray::number(i) + '\n';
    }
    lines += QByteArray(10'000'000, 'y') + "\nx\n";
    const auto result = import(first + lines + last);
    EXPECT_EQ(result.added, 1201);
    EXPECT_THAT(m_said, ElementsAre("1203: refused x"));
    EXPECT_THAT(m_batches, SizeIs(4));
    QByteArray together;
    for (const QByteArray& batch : m_batches) {
        EXPECT_LE(batch.count('\n'), 500);
        EXPECT_LE(batch.size(), 10'100'000) << "no more than one line that is large";
        together += batch;
    }
    EXPECT_EQ(together, lines);
}

TEST_F(HistoryImportTest, WhatIsNoExportIsRefusedAtItsFirstLine)
{
    for (const QByteArray& wrong :
         {QByteArray("text\n"), QByteArray("{}\n"), last, QByteArray("one\n" + first + last),
          QByteArray(301, 'y')}) {
        m_said.clear();
        const auto result = import(wrong, 300);
        EXPECT_THAT(m_said, ElementsAre("1: here should be the first line of an export"));
        EXPECT_FALSE(result.isComplete);
    }
    EXPECT_THAT(m_batches, IsEmpty());
}

TEST_F(HistoryImportTest, AnEmptyFileIsNoExport)
{
    EXPECT_FALSE(import("").isComplete);
    EXPECT_THAT(m_said, ElementsAre("0: it is empty"));
}

TEST_F(HistoryImportTest, ALaterFormatIsNotGuessedAt)
{
    EXPECT_FALSE(import("{\"format\":\"tessly-history\",\"version\":2}\none\n" + last).isComplete);
    EXPECT_THAT(m_said, ElementsAre("1: a later version of Tessly has exported this"));
    EXPECT_THAT(m_batches, IsEmpty());
}

TEST_F(HistoryImportTest, OfAFileThatWasCutShortWhatIsThereIsHandedOn)
{
    const auto result = import(first + "one\ntw");
    EXPECT_THAT(m_batches, ElementsAre("one\ntw\n"));
    EXPECT_THAT(m_said, ElementsAre("0: the last line is missing: the file was cut short"));
    EXPECT_FALSE(result.isComplete);
}

TEST_F(HistoryImportTest, FilesMayStandOneBehindAnother)
{
    const auto result = import(first + "one\n" + last + first + "two\n" + last);
    EXPECT_EQ(result.added, 2);
    EXPECT_TRUE(result.isComplete);
    EXPECT_THAT(m_said, IsEmpty());
}

TEST_F(HistoryImportTest, BehindAFileThatWasCutShortTheNextIsRead)
{
    const auto result = import(first + "x1\n" + first + "two\n" + last);
    EXPECT_EQ(result.added, 1);
    EXPECT_EQ(result.refused, 2);
    EXPECT_THAT(m_said, ElementsAre("2: refused x1", "3: the export before this line has no end"));
}

TEST_F(HistoryImportTest, NothingIsReadBehindTheEnd)
{
    const auto result = import(first + "one\n" + last + "two\n");
    EXPECT_EQ(result.added, 1);
    EXPECT_THAT(m_said, ElementsAre("4: here should be the first line of an export"));
    EXPECT_FALSE(result.isComplete);
}

TEST_F(HistoryImportTest, EndsWhereNothingCanBeAdded)
{
    QByteArray lines;
    for (int i = 0; i < 1200; ++i) {
        lines += "line\n";
    }
    m_failsAt = 1;
    const auto result = import(first + lines + last);
    EXPECT_EQ(result.added, 500);
    EXPECT_FALSE(result.isComplete);
    EXPECT_THAT(m_said, IsEmpty()) << "whoever adds has said it";
}

} // namespace
} // namespace tessly::test
