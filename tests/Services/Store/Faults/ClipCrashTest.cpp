#include "FaultReport.h"
#include "HistoryFile.h"
#include "QtPrinting.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

constexpr int rounds = 100;

/// What a writer has reported.
struct Reports
{
    QSet<QByteArray> saved;
    QSet<QByteArray> removed;
    /// Begun, with or without success.
    QSet<QByteArray> removing;

    void take(const QByteArray& line)
    {
        const QByteArrayList words = line.trimmed().split(' ');
        // The last line may be cut short.
        if (words.size() != 2 || !line.endsWith('\n')) {
            return;
        }
        QSet<QByteArray>& set = words[0] == "saved"     ? saved
                                : words[0] == "removed" ? removed
                                                        : removing;
        set.insert(words[1].toUpper());
    }
};

/// Runs a writer and kills it after some reports, at a moment nobody knows.
void writeAndKill(const QString& path, Reports& reports)
{
    QRandomGenerator& random = *QRandomGenerator::global();
    QProcess writer;
    writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    writer.start(QStringLiteral(TESSLY_STORE_WRITER), {path});
    for (int lines = random.bounded(1, 15); lines > 0; --lines) {
        while (!writer.canReadLine()) {
            ASSERT_TRUE(writer.waitForReadyRead(20'000)) << "the writer is stuck";
        }
        reports.take(writer.readLine());
    }
    // Not a wait for something to happen, but the chance for anything to.
    QElapsedTimer timer;
    timer.start();
    const qint64 moment = random.bounded(3'000'000);
    while (timer.nsecsElapsed() < moment) {
    }
    writer.kill();
    ASSERT_TRUE(writer.waitForFinished(20'000));
    EXPECT_EQ(writer.exitStatus(), QProcess::CrashExit) << "the writer ended by itself";
    while (writer.canReadLine()) {
        reports.take(writer.readLine());
    }
}

} // namespace

TEST(ClipCrash, losesNothingThatWasReportedWheneverTheProcessIsKilled)
{
    HistoryFile history;
    Reports reports;
    for (int round = 0; round < rounds; ++round) {
        writeAndKill(history.path(), reports);
        ASSERT_TRUE(history.open().ftsAvailable()) << "round " << round;
        history.close();
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");

        const QByteArrayList ids = history.ask("SELECT id FROM clips");
        const QSet<QByteArray> present(ids.begin(), ids.end());
        EXPECT_EQ(QSet<QByteArray>(reports.saved) - reports.removing - present, QSet<QByteArray>())
            << "saved and lost, in round " << round;
        EXPECT_EQ(QSet<QByteArray>(reports.removed) & present, QSet<QByteArray>())
            << "removed and back again, in round " << round;
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    EXPECT_GT(reports.saved.size(), rounds);
    EXPECT_FALSE(reports.removed.isEmpty());
    reportFaults("killed (-9)", {{"nothing lost", rounds}});
}

} // namespace tessly::test
