#include "AppPaths.h"
#include "FaultReport.h"
#include "FolderSnapshot.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "QtPrinting.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSet>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

// Damages a history's files at random, and starts as the program does. With TESSLY_ALL_FAULTS in
// the environment 500 times; TESSLY_SEED repeats a run.

namespace tessly::test {

namespace {

constexpr qsizetype pageSize = HistoryFile::pageSize;
const QString databaseName = u"history.sqlite"_s;
const QString logName = u"history.sqlite-wal"_s;

QByteArray noise(qsizetype size, QRandomGenerator& random)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes) {
        byte = static_cast<char>(random.bounded(256));
    }
    return bytes;
}

qsizetype anyOf(qsizetype count, QRandomGenerator& random)
{
    return random.bounded(static_cast<int>(count));
}

qsizetype anyPage(const QByteArray& file, QRandomGenerator& random)
{
    return anyOf(file.size() / pageSize, random) * pageSize;
}

void flip(QByteArray& file, qsizetype begin, qsizetype end, QRandomGenerator& random)
{
    for (int left = random.bounded(1, 20); left > 0; --left) {
        const qsizetype at = begin + anyOf(end - begin, random);
        file[at] = static_cast<char>(file[at] ^ random.bounded(1, 256));
    }
}

/// What can happen to a file, the log being one.
struct Damage
{
    const char* name;
    bool isOfTheLog;
    void (*inflict)(QByteArray& file, QRandomGenerator& random);
};

const std::vector<Damage> damages = {
    {"bytes changed", false,
     [](QByteArray& file, QRandomGenerator& random) { flip(file, 0, file.size(), random); }},
    {"header changed", false,
     [](QByteArray& file, QRandomGenerator& random) { flip(file, 0, 100, random); }},
    {"schema changed", false,
     [](QByteArray& file, QRandomGenerator& random) { flip(file, 100, pageSize, random); }},
    {"page zeroed", false,
     [](QByteArray& file, QRandomGenerator& random) {
         file.replace(anyPage(file, random), pageSize, QByteArray(pageSize, '\0'));
     }},
    {"page overwritten", false,
     [](QByteArray& file, QRandomGenerator& random) {
         file.replace(anyPage(file, random), pageSize, noise(pageSize, random));
     }},
    {"pages swapped", false,
     [](QByteArray& file, QRandomGenerator& random) {
         const qsizetype one = anyPage(file, random);
         const qsizetype other = anyPage(file, random);
         const QByteArray kept = file.mid(one, pageSize);
         file.replace(one, pageSize, file.mid(other, pageSize));
         file.replace(other, pageSize, kept);
     }},
    {"page headers changed", false,
     [](QByteArray& file, QRandomGenerator& random) {
         const qsizetype page = anyPage(file, random);
         flip(file, page, page + 12, random);
     }},
    {"many pages overwritten", false,
     [](QByteArray& file, QRandomGenerator& random) {
         const qsizetype begin = anyPage(file, random);
         const qsizetype end = std::min(begin + 20 * pageSize, file.size());
         file.replace(begin, end - begin, noise(end - begin, random));
     }},
    {"cut", false,
     [](QByteArray& file, QRandomGenerator& random) { file.truncate(anyOf(file.size(), random)); }},
    {"cut at a page", false,
     [](QByteArray& file, QRandomGenerator& random) { file.truncate(anyPage(file, random)); }},
    {"log changed", true,
     [](QByteArray& file, QRandomGenerator& random) { flip(file, 0, file.size(), random); }},
    {"log's header changed", true,
     [](QByteArray& file, QRandomGenerator& random) { flip(file, 0, 32, random); }},
    {"log cut", true,
     [](QByteArray& file, QRandomGenerator& random) { file.truncate(anyOf(file.size(), random)); }},
};

class ClipDamage : public testing::Test
{
protected:
    ClipDamage()
    {
        QRandomGenerator random(1);
        history.open();
        for (int i = 0; i < 150; ++i) {
            history.saveText("text " + QByteArray::number(i) + ' ' + QByteArray(i * 13 % 700, 'x'));
        }
        for (int i = 0; i < 8; ++i) {
            save({.imagePNG = "\x89PNG\r\n\x1a\n" + noise(20'000, random)});
            save({.plainText = "rich " + QByteArray::number(i), .html = noise(3000, random)});
            save({.fileURLs = {"file:///home/user/file%20" + QByteArray::number(i)}});
        }
        for (const Clip& clip : all()) {
            if (random.bounded(20) == 0) {
                history.database().setPinned(true, clip.id);
            }
        }
        history.database().scrub();
        closed = FolderSnapshot(history.folder());
        closedCount = all().size();
        // What a kill leaves.
        for (int i = 0; i < 30; ++i) {
            history.saveText("logged " + QByteArray::number(i) + QByteArray(500, 'x'));
        }
        killed = FolderSnapshot(history.folder());
        for (const Clip& clip : all()) {
            before.insert(clip.payload.contentHash());
        }
        history.close();
    }

    void save(const ClipPayload::Fields& fields)
    {
        history.database().save(ClipPayload(fields), u"App"_s, u"org.app"_s, 1000);
    }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }

    void inflict(const Damage& damage, QRandomGenerator& random)
    {
        history.close();
        const bool hasLog = damage.isOfTheLog || random.bounded(3) == 0;
        QDir(history.folder() + u"/Recovered History"_s).removeRecursively();
        (hasLog ? killed : closed).restore();
        count = hasLog ? static_cast<std::size_t>(before.size()) : closedCount;
        // Made anew from the log.
        QFile::remove(history.path() + u"-shm"_s);
        QFile file(history.path() + (damage.isOfTheLog ? u"-wal"_s : u""_s));
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        QByteArray bytes = file.readAll();
        damage.inflict(bytes, random);
        ASSERT_TRUE(file.resize(0) && file.seek(0));
        ASSERT_EQ(file.write(bytes), bytes.size());
        history.now = 2'000'000;
    }

    /// Opens the history, or a fresh one beside it if it has to be set aside. What became of it.
    const char* start()
    {
        const FolderSnapshot damaged(history.folder());
        try {
            history.open();
        } catch (const ClipStoreError& error) {
            if ((error.sqliteCode() & 0xff) == SQLITE_READONLY) {
                // By its header a later format, which nobody can tell from a damage.
                EXPECT_GT(quint8(damaged.files().value(databaseName).at(18)), 2);
                closed.restore();
                history.open();
                return "refused, as of a later format";
            }
            EXPECT_EQ(error.errorCase(), ClipStoreError::Case::corruptedDatabase) << error.what();
            return setAside(damaged);
        }
        try {
            return all().size() == count ? "sound" : "sound, the latest lost";
        } catch (const ClipStoreError&) {
            return "sound, a row refused";
        }
    }

    const char* setAside(const FolderSnapshot& damaged)
    {
        const auto folder = AppPaths::recoverDatabaseFiles(history.folder());
        if (!folder) {
            ADD_FAILURE() << "nothing was set aside";
            return "lost";
        }
        history.open();
        const ClipRescue rescue =
            history.database().rescue(QDir(*folder).filePath(databaseName), 1000);
        EXPECT_EQ(AppPaths::unfinishedRecovery(history.folder()), std::nullopt);
        const std::vector<Clip> rescued = all();
        EXPECT_EQ(rescue.kept, static_cast<qint64>(rescued.size()));
        EXPECT_LE(rescue.kept, rescue.found);
        for (const Clip& clip : rescued) {
            EXPECT_TRUE(before.contains(clip.payload.contentHash())) << "it never was there";
        }
        // The originals are as they were found; behind the end of the log may stand how it was
        // tried to mend them.
        const FolderSnapshot now(*folder);
        EXPECT_EQ(now.files().value(databaseName), damaged.files().value(databaseName));
        EXPECT_GE(now.files().value(logName).size(), damaged.files().value(logName).size());
        m_rescued += rescued.size();
        m_setAside += count;
        if (rescued.empty()) {
            return "set aside, nothing readable";
        }
        return rescued.size() * 10 >= count * 9 ? "rescued, nine tenths or more" : "rescued, less";
    }

    /// Whatever is wrong with what was there.
    void expectToRecord()
    {
        const Clip saved = history.saveText("copied afterwards");
        EXPECT_TRUE(history.database().payload(saved.id).has_value());
        history.database().setPinned(true, saved.id);
        const auto found = history.database().summaries(u"afterwards"_s, std::nullopt, -1);
        EXPECT_EQ(found.size(), 1U);
        (void)history.database().scrub();
        history.database().remove(saved.id);
        EXPECT_FALSE(history.database().payload(saved.id).has_value());
    }

    LogCapture log;
    HistoryFile history;
    FolderSnapshot closed;
    FolderSnapshot killed;
    std::size_t closedCount = 0;
    /// The hashes of all contents.
    QSet<QByteArray> before;
    /// How many clips the files had that are being damaged.
    std::size_t count = 0;
    // How many clips there were in histories that were set aside, and how many were rescued.
    std::size_t m_setAside = 0;
    std::size_t m_rescued = 0;
};

} // namespace

TEST_F(ClipDamage, ofAnySortEndsWithASoundHistoryThatRecords)
{
    const unsigned seed = randomSeed();
    QRandomGenerator random(seed);
    const int rounds = triesAllFaults() ? 500 : 60;
    std::map<std::string, std::map<std::string, int>> outcomes;
    for (int round = 0; round < rounds; ++round) {
        const Damage& damage = damages[static_cast<std::size_t>(round) % damages.size()];
        SCOPED_TRACE(
            "seed " + std::to_string(seed) + ", round " + std::to_string(round) + ": " +
            damage.name);
        inflict(damage, random);
        try {
            ++outcomes[damage.name][start()];
            expectToRecord();
            history.open();
        } catch (const ClipStoreError& error) {
            ADD_FAILURE() << error.what();
        }
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(m_setAside, 0U);
    EXPECT_GT(m_rescued * 3, m_setAside);
    for (const auto& [damage, counts] : outcomes) {
        reportFaults("damage: " + damage, counts);
    }
}

} // namespace tessly::test
