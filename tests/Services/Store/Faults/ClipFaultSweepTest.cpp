#include "FaultReport.h"
#include "FaultVFS.h"
#include "FilledHistory.h"
#include "FolderSnapshot.h"
#include "LogCapture.h"
#include "QtPrinting.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

// Lets one call after another of what SQLite asks of its files fail, in the midst of each operation
// of the history. With TESSLY_ALL_FAULTS in the environment every call, else a part of them.

namespace tessly::test {

namespace {

using Call = FaultVFS::Call;
using Fault = FaultVFS::Fault;
using Span = FaultVFS::Span;

enum class Start { open, closed };

/// Of the text with the secret, in the files, once what was put off is done as well.
enum class Secret {
    stays,
    /// Gone if the operation succeeded.
    goesWithSuccess,
    goes,
};

struct Operation
{
    const char* name;
    std::function<void(HistoryFile&)> run;
    std::function<void(HistoryFile&)> fill = fillUsually;
    Start start = Start::open;
    Secret secret = Secret::stays;
    /// Whether the operation is tried again where the disk fails it once.
    bool isRetried = false;
    /// Whether what failed, done once more, comes to the same end as what did not.
    bool canBeTakenUp = false;
    /// For an operation of several transactions: whether a failure may leave this.
    std::function<bool(const QStringList& before, const QStringList& after, const QStringList&)>
        isBetween = [](const auto&, const auto&, const auto&) { return false; };
    /// What has to hold besides, once what was put off is done as well.
    std::function<void(HistoryFile&)> check = [](HistoryFile&) {};
    /// How many calls a test that does not try all of them leaves out, in parts of those it has
    /// tried.
    double haste = 0.5;
};

void fillAndDamageTheIndex(HistoryFile& history)
{
    fillUsually(history);
    const qsizetype page =
        history.ask("SELECT rootpage FROM sqlite_master WHERE name = 'clips_fts_data'")
            .first()
            .toLongLong();
    QFile file(history.path());
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    file.seek((page - 1) * HistoryFile::pageSize);
    file.write(QByteArray(HistoryFile::pageSize, '\x55'));
}

/// A deletion whose traces nobody has wiped: in the index, where earlier versions of SQLite leave
/// them, and in the file, since it is only in the log.
void fillAndLeaveResidue(HistoryFile& history)
{
    fillUsually(history);
    SQLiteConnection connection(history.path());
    connection.setKeepsLog(true);
    const QByteArray deletion = "PRAGMA secure_delete = ON; DELETE FROM clips "
                                "WHERE plain_text LIKE '" +
                                secretWord + "%'";
    connection.execute(deletion.constData());
}

/// So much free room that the file is to shrink.
void fillAndLeaveRoom(HistoryFile& history)
{
    fillUsually(history);
    history.open();
    history.saveText(QByteArray(450'000, 'z'));
    history.close();
    history.execute("PRAGMA secure_delete = ON; DELETE FROM clips WHERE plain_text LIKE 'zzz%'");
    ASSERT_GT(history.ask("PRAGMA freelist_count").first().toInt(), 600);
}

void scrub(HistoryFile& history)
{
    if (history.database().scrub() != ClipStore::Upkeep::done) {
        throw ClipStoreError(ClipStoreError::Case::execute, u"hindered"_s);
    }
}

void rescue(HistoryFile& history)
{
    if (const QString damaged = unfinishedRescue(history); !damaged.isEmpty()) {
        (void)history.database().rescue(damaged, 1000);
    }
}

void removeTheSecret(HistoryFile& history)
{
    for (const Clip& clip : history.database().search({}, std::nullopt, -1)) {
        if (clip.payload.held()->plainText()->startsWith(secretWord)) {
            history.database().remove(clip.id);
        }
    }
}

/// Without the first part that clearing deletes: the latest thousand.
bool isClearedInPart(
    const QStringList& before, const QStringList& /*after*/, const QStringList& state)
{
    return state == before.mid(0, 1) + before.mid(1001);
}

/// The pinned and the latest come first, a hundred rows at once.
bool isBroughtOverInPart(
    const QStringList& /*before*/, const QStringList& after, const QStringList& state)
{
    return state.size() > 80 && after.mid(0, state.size()) == state;
}

const char* name(Call call)
{
    switch (call) {
    case Call::open:
        return "open";
    case Call::read:
        return "read";
    case Call::write:
        return "write";
    case Call::sync:
        return "sync";
    case Call::truncate:
        return "truncate";
    case Call::shm:
        return "shm";
    case Call::lock:
        return "lock";
    }
    Q_UNREACHABLE();
}

const char* name(Fault fault)
{
    switch (fault) {
    case Fault::io:
        return "EIO";
    case Fault::noSpace:
        return "ENOSPC";
    case Fault::readOnly:
        return "EROFS";
    }
    Q_UNREACHABLE();
}

class ClipFaultSweep : public testing::TestWithParam<Operation>
{
protected:
    ClipFaultSweep()
    {
        GetParam().fill(history);
        history.close();
        m_start = FolderSnapshot(history.folder());
        if (hasSecret()) {
            EXPECT_TRUE(isSecretInFiles(history)) << "there is nothing to be wiped";
        }
    }
    ~ClipFaultSweep() override
    {
        // Which its files still go through.
        history.close();
    }

    bool hasSecret() const { return GetParam().secret != Secret::stays; }

    void restore()
    {
        history.close();
        m_start.restore();
        history.now = 2'000'000;
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
        // What was set aside is the user's.
        const FolderSnapshot now(history.folder());
        for (auto file = m_start.files().begin(); file != m_start.files().end(); ++file) {
            if (file.key().contains(u'/') && !file.value().isEmpty()) {
                EXPECT_EQ(now.files().value(file.key()), file.value());
            }
        }
    }

    /// Lets one call fail. False if the operation does not make as many.
    bool failAt(Call call, Fault fault, Span span, int number)
    {
        restore();
        if (GetParam().start == Start::open) {
            history.open();
        }
        vfs.fail(call, fault, number, span);
        QString error;
        try {
            GetParam().run(history);
        } catch (const ClipStoreError& thrown) {
            error = thrown.description();
            EXPECT_NE(thrown.errorCase(), ClipStoreError::Case::corruptedDatabase) << thrown.what();
        }
        vfs.failNothing();
        if (!vfs.hasFailed()) {
            EXPECT_EQ(error, QString());
            return false;
        }
        // What was reported is what is there, in this process and in the next.
        if (GetParam().start == Start::open) {
            expectReported(error);
        }
        if (GetParam().isRetried && span == Span::once && fault == Fault::io &&
            call != Call::open) {
            EXPECT_EQ(error, QString());
        }
        history.open();
        const char* const outcome = expectReported(error);
        ++m_outcomes[outcome];
        EXPECT_TRUE(history.database().ftsAvailable());
        if (GetParam().canBeTakenUp) {
            GetParam().run(history);
            EXPECT_EQ(look(history), m_after) << error.toStdString();
        }
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        if (hasSecret()) {
            const bool isGone =
                error.isEmpty() || GetParam().secret == Secret::goes || GetParam().canBeTakenUp;
            EXPECT_EQ(isSecretInFiles(history), !isGone);
        }
        GetParam().check(history);
        history.saveText("and on");
        expectSound();
        return true;
    }

    /// Which of the states there may be is there.
    const char* expectReported(const QString& error)
    {
        const QStringList state = look(history);
        if (error.isEmpty()) {
            EXPECT_EQ(state, m_after);
            return "done";
        }
        if (GetParam().isBetween(m_before, m_after, state)) {
            return state == m_after ? "refused, all there" : "refused, a part done";
        }
        EXPECT_EQ(state, m_before) << error.toStdString();
        return "refused";
    }

    void sweep(Call call, Fault fault, Span span)
    {
        // A part of them: the first ones, then ever fewer.
        const auto next = [](int number) {
            return triesAllFaults() ? number + 1
                                    : number + 1 + static_cast<int>(number * GetParam().haste);
        };
        for (int number = 1;; number = next(number)) {
            SCOPED_TRACE(
                std::string(name(call)) + " " + name(fault) + " at call " + std::to_string(number) +
                (span == Span::once ? "" : " and all that follow"));
            if (!failAt(call, fault, span, number) || HasFailure()) {
                return;
            }
        }
    }

    // What is logged on the way would fill pages.
    LogCapture log;
    HistoryFile history;
    FaultVFS vfs;
    FolderSnapshot m_start;
    QStringList m_before;
    QStringList m_after;
    std::map<std::string, int> m_outcomes;
};

TEST_P(ClipFaultSweep, leavesTheOldStateOrTheNewAsItIsReported)
{
    restore();
    history.open();
    m_before = look(history);
    if (GetParam().start == Start::closed) {
        history.close();
    }
    GetParam().run(history);
    m_after = look(history);
    for (const Call call :
         {Call::open, Call::read, Call::write, Call::sync, Call::truncate, Call::shm, Call::lock}) {
        for (const Fault fault : {Fault::io, Fault::noSpace, Fault::readOnly}) {
            // Where the kind of fault makes no difference to SQLite, one will do.
            const bool isTold = call == Call::shm ||
                                (call == Call::write && fault != Fault::readOnly) ||
                                (call == Call::open && fault != Fault::noSpace);
            if (fault != Fault::io && !isTold) {
                continue;
            }
            for (const Span span : {Span::once, Span::fromThenOn}) {
                sweep(call, fault, span);
                ASSERT_FALSE(HasFailure());
            }
        }
    }
    EXPECT_FALSE(m_outcomes.empty()) << "no call failed: this shows nothing";
    reportFaults(std::string("a call fails: ") + GetParam().name, m_outcomes);
}

INSTANTIATE_TEST_SUITE_P(
    ofA, ClipFaultSweep,
    testing::Values(
        Operation{
            .name = "opening",
            .run = [](HistoryFile& history) { history.open(); },
            .start = Start::closed,
            .isRetried = true},
        Operation{
            .name = "openingAndMending",
            .run = [](HistoryFile& history) { history.open(); },
            .fill = fillAndDamageTheIndex,
            .start = Start::closed,
            .isRetried = true},
        Operation{.name = "save", .run = [](HistoryFile& history) { history.saveText("new"); }},
        Operation{
            .name = "saveThatTrims",
            .run =
                [](HistoryFile& history) { history.saveText("new " + QByteArray(9000, 'n'), 10); }},
        Operation{.name = "bump", .run = [](HistoryFile& history) { history.saveText("pinned"); }},
        Operation{
            .name = "pin",
            .run =
                [](HistoryFile& history) {
                    history.database().setPinned(true, idOf(history, u"last"_s));
                }},
        Operation{
            .name = "use",
            .run =
                [](HistoryFile& history) {
                    history.database().markUsed(idOf(history, u"pinned"_s), true);
                }},
        Operation{
            .name = "trim",
            .run = [](HistoryFile& history) { history.database().trimHistory(10); }},
        Operation{.name = "delete", .run = removeTheSecret, .secret = Secret::goesWithSuccess},
        Operation{
            .name = "clear",
            .run = [](HistoryFile& history) { history.database().clear(false); },
            .secret = Secret::goesWithSuccess},
        Operation{
            .name = "clearEverything",
            .run = [](HistoryFile& history) { history.database().clear(true); },
            .secret = Secret::goesWithSuccess},
        Operation{
            .name = "clearInParts",
            .run = [](HistoryFile& history) { history.database().clear(false); },
            .fill = fillWithMany,
            .canBeTakenUp = true,
            .isBetween = isClearedInPart,
            .haste = 3},
        Operation{
            .name = "wipe",
            .run = scrub,
            .fill = fillAndLeaveResidue,
            .secret = Secret::goes,
            .canBeTakenUp = true},
        Operation{
            .name = "shrink",
            .run = scrub,
            .fill = fillAndLeaveRoom,
            .canBeTakenUp = true,
            .check =
                [](HistoryFile& history) {
                    // Less is left for the next copies.
                    EXPECT_LT(history.ask("PRAGMA freelist_count").first().toInt(), 512);
                },
            .haste = 1},
        Operation{
            .name = "rescue",
            .run = rescue,
            .fill = fillAndDamage,
            .canBeTakenUp = true,
            .isBetween = isBroughtOverInPart,
            .check = [](HistoryFile& history) { EXPECT_EQ(unfinishedRescue(history), QString()); },
            .haste = 1}),
    [](const testing::TestParamInfo<Operation>& info) { return std::string(info.param.name); });

} // namespace

} // namespace tessly::test
