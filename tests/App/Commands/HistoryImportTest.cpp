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
        return import(bytes, longest, '\n', [](HistoryImport& import) { import.run(); });
    }
    HistoryImport::Result importTexts(const QByteArray& bytes, qsizetype longest = 20'000'000)
    {
        return import(
            bytes, longest, '\0', [](HistoryImport& import) { import.runOfTexts(newestText); });
    }
    HistoryImport::Result import(
        const QByteArray& bytes, qsizetype longest, char separator,
        const std::function<void(HistoryImport&)>& run)
    {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        file.write(bytes);
        file.flush();
        file.seek(0);
        LineReader lines(file.handle(), u"file"_s, longest, separator);
        HistoryImport import(
            lines, [this](const QByteArray& batch) { return add(batch); },
            [this](qint64 line, const QString& reason) {
                m_said.push_back(std::to_string(line) + ": " + reason.toStdString());
            });
        run(import);
        return import.result();
    }
    /// All that was handed on, as entries.
    [[nodiscard]] std::vector<Clip> clips() const
    {
        std::vector<Clip> clips;
        for (const QByteArray& batch : m_batches) {
            for (const QByteArray& line : batch.split('\n')) {
                if (!line.isEmpty()) {
                    auto read = ExportFormat::parse(line, newestText);
                    EXPECT_TRUE(std::holds_alternative<Clip>(read)) << line.toStdString();
                    clips.push_back(std::get<Clip>(std::move(read)));
                }
            }
        }
        return clips;
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

    static constexpr double newestText = 1'700'000'000;
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

TEST_F(HistoryImportTest, TextsBecomeEntriesEachOlderThanTheOneBeforeIt)
{
    const QByteArray bytes("one\ntwo\0\0 three \0https://example.org/", 37);
    const auto result = importTexts(bytes);
    EXPECT_EQ(result.added, 3);
    EXPECT_TRUE(result.isComplete);
    EXPECT_THAT(m_said, IsEmpty());
    const std::vector<Clip> clips = this->clips();
    ASSERT_THAT(clips, SizeIs(3));
    EXPECT_EQ(clips[0].payload.held()->plainText(), "one\ntwo");
    EXPECT_EQ(clips[1].payload.held()->plainText(), " three ");
    EXPECT_EQ(clips[2].payload.held()->plainText(), "https://example.org/");
    EXPECT_EQ(clips[2].payload.held()->kind(), ClipKind::link);
    EXPECT_EQ(clips[0].lastUsedAt, newestText);
    EXPECT_EQ(clips[0].createdAt, newestText);
    EXPECT_LT(clips[1].lastUsedAt, clips[0].lastUsedAt);
    EXPECT_LT(clips[2].lastUsedAt, clips[1].lastUsedAt);
    for (const Clip& clip : clips) {
        EXPECT_FALSE(clip.isPinned);
        EXPECT_EQ(clip.copyCount, 1);
    }
}

TEST_F(HistoryImportTest, ATextThatIsTooLongIsRefusedByItsPlace)
{
    const auto result = importTexts("one" + QByteArray(1, '\0') + QByteArray(301, 'y') + '\0', 300);
    EXPECT_EQ(result.added, 1);
    EXPECT_EQ(result.refused, 1);
    EXPECT_THAT(m_said, ElementsAre("2: it is too long"));
    EXPECT_TRUE(result.isComplete);
}

TEST_F(HistoryImportTest, TextsAreHandedOnALittleAtATime)
{
    QByteArray texts;
    for (int i = 0; i < 1200; ++i) {
        texts += "text " + QByteArray::number(i) + '\0';
    }
    EXPECT_EQ(importTexts(texts).added, 1200);
    EXPECT_THAT(m_batches, SizeIs(3));
    EXPECT_THAT(clips(), SizeIs(1200));
}

TEST_F(HistoryImportTest, AnEmptyFileHasNoTexts)
{
    EXPECT_FALSE(importTexts("").isComplete);
    EXPECT_THAT(m_said, ElementsAre("0: it is empty"));
    EXPECT_THAT(m_batches, IsEmpty());
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
