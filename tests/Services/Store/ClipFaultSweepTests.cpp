#include "FaultVFS.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "UI/QtPrinting.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

// Lets one call after another of what SQLite asks of its files fail, in the midst of each operation
// of the history. With TESSLY_ALL_FAULTS in the environment every call, and a table at the end of
// what became of it; else a part of them.

namespace tessly::test {

namespace {

using Call = FaultVFS::Call;
using Fault = FaultVFS::Fault;
using Span = FaultVFS::Span;

const QByteArray secret = "xsecretx";

enum class Start { open, closed };

struct Operation
{
    const char* name;
    std::function<void(HistoryFile&)> run;
    Start start = Start::open;
    /// Whether the secret is to be gone from the files behind it, once `scrub` has run.
    bool wipesTheSecret = false;
    /// Whether the operation is tried again where the disk fails it once.
    bool isPatient = false;
    /// Whether a page of the index is damaged.
    bool hasDamagedIndex = false;
};

/// What a user sees of a history.
QStringList look(const std::vector<Clip>& clips)
{
    QStringList lines;
    for (const Clip& clip : clips) {
        lines.append(u"%1 %2 %3 %4 %5"_s.arg(clip.payload.previewLine())
                         .arg(clip.isPinned)
                         .arg(clip.pinOrder.value_or(-1))
                         .arg(clip.copyCount)
                         .arg(clip.lastUsedAt));
    }
    return lines;
}

QUuid idOf(HistoryFile& history, const QString& preview)
{
    for (const Clip& clip : history.database().search({}, std::nullopt, -1)) {
        if (clip.payload.previewLine() == preview) {
            return clip.id;
        }
    }
    throw std::runtime_error("no such clip");
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

bool isThorough()
{
    return qEnvironmentVariableIsSet("TESSLY_ALL_FAULTS");
}

class ClipFaultSweep : public testing::TestWithParam<Operation>
{
protected:
    struct Outcome
    {
        int failed = 0;
        int succeeded = 0;
    };

    ClipFaultSweep()
    {
        history.open();
        for (int i = 0; i < 14; ++i) {
            history.saveText("text " + QByteArray::number(i) + QByteArray(1500, 'x'));
        }
        history.saveText("pinned");
        history.database().setPinned(true, idOf(history, u"pinned"_s));
        history.saveText(secret + ' ' + QByteArray(30'000, 'y'));
        history.saveText("last");
        history.database().scrub();
        history.close();
        QFile file(history.path());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        m_bytes = file.readAll();
        if (GetParam().hasDamagedIndex) {
            const qsizetype page =
                history.ask("SELECT rootpage FROM sqlite_master WHERE name = 'clips_fts_data'")
                    .first()
                    .toLongLong();
            m_bytes.replace((page - 1) * 4096, 4096, QByteArray(4096, '\x55'));
        }
    }

    void restore()
    {
        history.close();
        for (const QString& companion : {u"-wal"_s, u"-shm"_s, u"-journal"_s}) {
            QFile::remove(history.path() + companion);
        }
        QFile file(history.path());
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(m_bytes);
        file.close();
        history.now = 2'000'000;
    }

    QStringList look() { return test::look(history.database().search({}, std::nullopt, -1)); }

    bool isSecretInFiles() const
    {
        const QDir folder(history.folder());
        const QStringList names = folder.entryList(QDir::Files);
        return std::ranges::any_of(names, [&](const QString& entry) {
            QFile file(folder.filePath(entry));
            EXPECT_TRUE(file.open(QFile::ReadOnly));
            return file.readAll().contains(secret);
        });
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    }

    /// Lets one call fail. False if the operation does not make as many.
    bool failAt(Call call, Fault fault, Span span, int number, Outcome& outcome)
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
        const QStringList& expected = error.isEmpty() ? m_after : m_before;
        if (GetParam().start == Start::open) {
            EXPECT_EQ(look(), expected) << error.toStdString();
        }
        if (GetParam().isPatient && span == Span::once && fault == Fault::io &&
            call != Call::open) {
            EXPECT_EQ(error, QString());
        }
        history.open();
        EXPECT_EQ(look(), expected) << error.toStdString();
        EXPECT_TRUE(history.database().ftsAvailable());
        ++(error.isEmpty() ? outcome.succeeded : outcome.failed);
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        if (GetParam().wipesTheSecret) {
            EXPECT_EQ(isSecretInFiles(), !error.isEmpty());
        }
        history.saveText("and on");
        expectSound();
        return true;
    }

    Outcome sweep(Call call, Fault fault, Span span)
    {
        Outcome outcome;
        // A part of them: the first ones, then ever fewer.
        const auto next = [](int number) {
            return isThorough() ? number + 1 : number + 1 + number / 2;
        };
        for (int number = 1;; number = next(number)) {
            SCOPED_TRACE(
                std::string(name(call)) + " " + name(fault) + " at call " + std::to_string(number) +
                (span == Span::once ? "" : " and all that follow"));
            if (!failAt(call, fault, span, number, outcome) || HasFailure()) {
                return outcome;
            }
        }
    }

    // What is logged on the way would fill pages.
    LogCapture log;
    HistoryFile history;
    FaultVFS vfs;
    QByteArray m_bytes;
    QStringList m_before;
    QStringList m_after;
};

TEST_P(ClipFaultSweep, leavesTheOldStateOrTheNewAsItIsReported)
{
    restore();
    history.open();
    m_before = look();
    if (GetParam().start == Start::closed) {
        history.close();
    }
    GetParam().run(history);
    m_after = look();
    int all = 0;
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
                const Outcome outcome = sweep(call, fault, span);
                ASSERT_FALSE(HasFailure());
                all += outcome.failed + outcome.succeeded;
                if (isThorough() && outcome.failed + outcome.succeeded > 0) {
                    std::printf(
                        "%-16s %-9s %-7s %-7s %5d failed, %5d succeeded\n", GetParam().name,
                        name(call), name(fault), span == Span::once ? "once" : "lasting",
                        outcome.failed, outcome.succeeded);
                }
            }
        }
    }
    EXPECT_GT(all, 0) << "no call failed: this shows nothing";
}

INSTANTIATE_TEST_SUITE_P(
    ofA, ClipFaultSweep,
    testing::Values(
        Operation{
            "opening", [](HistoryFile& history) { history.open(); }, Start::closed, false, true},
        Operation{
            "openingAndMending", [](HistoryFile& history) { history.open(); }, Start::closed, false,
            true, true},
        Operation{"save", [](HistoryFile& history) { history.saveText("new"); }},
        Operation{
            "saveThatTrims",
            [](HistoryFile& history) { history.saveText("new " + QByteArray(9000, 'n'), 10); }},
        Operation{"bump", [](HistoryFile& history) { history.saveText("pinned"); }},
        Operation{
            "pin",
            [](HistoryFile& history) {
                history.database().setPinned(true, idOf(history, u"last"_s));
            }},
        Operation{
            "use",
            [](HistoryFile& history) {
                history.database().markUsed(idOf(history, u"pinned"_s), true);
            }},
        Operation{
            "delete",
            [](HistoryFile& history) {
                for (const Clip& clip : history.database().search({}, std::nullopt, -1)) {
                    if (clip.payload.held()->plainText()->startsWith(secret)) {
                        history.database().remove(clip.id);
                    }
                }
            },
            Start::open, true},
        Operation{
            "clear", [](HistoryFile& history) { history.database().clear(false); }, Start::open,
            true},
        Operation{
            "clearEverything", [](HistoryFile& history) { history.database().clear(true); },
            Start::open, true}),
    [](const testing::TestParamInfo<Operation>& info) { return std::string(info.param.name); });

} // namespace

} // namespace tessly::test
