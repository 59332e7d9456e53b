#include "ExportedClips.h"
#include "FaultReport.h"
#include "FilledHistory.h"
#include "FolderSnapshot.h"
#include "LogCapture.h"
#include "PowerLossVFS.h"
#include "QtPrinting.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

// Ends a day of a history by a power failure, at each of the writes that it comes to. With
// TESSLY_ALL_FAULTS in the environment at all of them, several times; TESSLY_SEED repeats a run.
//
// What the history promises (WAL mode, synchronous = NORMAL): it opens, sound; each operation is
// there wholly or not at all; none is there without those before it; and those up to the last
// deletion are there, since deleting ends with the log copied back and everything synced.

namespace tessly::test {

namespace {

struct Step
{
    std::function<void(HistoryFile&)> run;
    /// Whether it is on the disk, with all before it, once it is reported.
    bool isLasting = false;
    /// What is there amid the step, of what was there before it, if it is of several transactions.
    std::function<QStringList(const QStringList& before)> midway = {};
};

struct Day
{
    const char* name;
    std::function<void(HistoryFile&)> fill;
    std::vector<Step> steps;
    /// Whether the secret is deleted by the first lasting step.
    bool deletesTheSecret = false;
    /// What the next start takes up, after which the day is at its end.
    std::function<void(HistoryFile&)> takeUp = {};
    /// Which part of the writes fail in a test that does not try all of them.
    int stride = 13;
    /// How often each write fails in one that does, each time with another luck.
    int rounds = 3;
};

class ClipPowerLoss : public testing::TestWithParam<Day>
{
protected:
    ClipPowerLoss()
    {
        GetParam().fill(history);
        history.close();
        m_start = FolderSnapshot(history.folder());
    }

    void begin()
    {
        history.close();
        m_start.restore();
        history.now = 2'000'000;
    }

    /// What there is to be seen at first and behind each step, if nothing fails.
    void learnStates()
    {
        begin();
        history.open();
        m_states = {look(history)};
        m_ends = {0};
        for (const Step& step : GetParam().steps) {
            if (step.midway) {
                m_states.push_back(step.midway(m_states.back()));
            }
            step.run(history);
            m_ends.push_back(m_states.size());
            m_states.push_back(look(history));
        }
    }

    /// Fails at a write. False if there are not so many.
    bool failAt(int number, QRandomGenerator& random)
    {
        begin();
        vfs.failAt(number);
        std::size_t reported = 0;
        std::size_t lasting = 0;
        try {
            history.open();
            for (const Step& step : GetParam().steps) {
                step.run(history);
                if (vfs.hasFailed()) {
                    break;
                }
                ++reported;
                lasting = step.isLasting ? reported : lasting;
            }
        } catch (const ClipStoreError& error) {
            EXPECT_TRUE(vfs.hasFailed()) << error.what();
        }
        history.close();
        if (!vfs.hasFailed()) {
            return false;
        }
        vfs.comeBack(random);

        // Throws if the history would be set aside.
        history.open();
        EXPECT_TRUE(history.database().ftsAvailable());
        expectOneOf(lasting, reported);
        if (GetParam().takeUp) {
            GetParam().takeUp(history);
            EXPECT_EQ(look(history), m_states.back());
        }
        EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        if (GetParam().deletesTheSecret && lasting > 0) {
            EXPECT_FALSE(isSecretInFiles(history));
        }
        const Clip saved = history.saveText("and on");
        EXPECT_TRUE(history.database().payload(saved.id).has_value());
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
        return true;
    }

    /// The step that was under way may be there, or a part of it, or not.
    void expectOneOf(std::size_t lasting, std::size_t reported)
    {
        const QStringList state = look(history);
        const std::size_t last = m_ends[std::min(reported + 1, m_ends.size() - 1)];
        for (std::size_t kept = m_ends[lasting]; kept <= last; ++kept) {
            if (m_states[kept] == state) {
                ++m_outcomes[kept < m_ends[reported] ? "the latest lost" : "nothing lost"];
                return;
            }
        }
        ADD_FAILURE() << "of " << reported << " steps, " << lasting
                      << " of them lasting, is left:\n"
                      << state.join(u'\n').toStdString();
    }

    LogCapture log;
    HistoryFile history;
    PowerLossVFS vfs;
    FolderSnapshot m_start;
    std::vector<QStringList> m_states;
    /// Of the states, those at the end of each step, and at first.
    std::vector<std::size_t> m_ends;
    std::map<std::string, int> m_outcomes;
};

TEST_P(ClipPowerLoss, leavesWhatWasThereUpToSomeOperation)
{
    const unsigned seed = randomSeed();
    QRandomGenerator random(seed);
    learnStates();
    const int rounds = triesAllFaults() ? GetParam().rounds : 1;
    const int stride = triesAllFaults() ? 1 : GetParam().stride;
    int failures = 0;
    for (int round = 0; round < rounds; ++round) {
        for (int number = triesAllFaults() ? 1 : random.bounded(1, stride);; number += stride) {
            SCOPED_TRACE(
                "seed " + std::to_string(seed) + ", round " + std::to_string(round) + ", write " +
                std::to_string(number));
            const bool hasFailed = failAt(number, random);
            ASSERT_FALSE(HasFailure());
            if (!hasFailed) {
                break;
            }
            ++failures;
        }
    }
    EXPECT_GT(failures, 0);
    reportFaults(std::string("the power fails: ") + GetParam().name, m_outcomes);
}

Step save(const QByteArray& text, qint64 maximum = 1000)
{
    return {[=](HistoryFile& history) { history.saveText(text, maximum); }};
}

Step scrub()
{
    return {
        [](HistoryFile& history) {
            // Hindered where the power is gone.
            (void)history.database().scrub();
        },
        true};
}

const std::vector<Step> usualDay = {
    save("new"),
    save("another " + QByteArray(20'000, 'n')),
    save("text 3" + QByteArray(1500, 'x')),
    {[](HistoryFile& history) { history.database().setPinned(true, idOf(history, u"last"_s)); }},
    {[](HistoryFile& history) { history.database().markUsed(idOf(history, u"pinned"_s), true); }},
    {[](HistoryFile& history) {
         history.database().remove(idOf(history, QString::fromLatin1(secretWord)));
     },
     true},
    save("after " + QByteArray(9000, 'a')),
    save("trims", 12),
    {[](HistoryFile& history) { history.database().trimHistory(10); }},
    scrub(),
    save("pinned"),
    {[](HistoryFile& history) { history.database().clear(false); }, true},
    save("the next"),
    {[](HistoryFile& history) { history.database().setPinned(false, idOf(history, u"last"_s)); }},
    {[](HistoryFile& history) { history.database().clear(true); }, true},
    save("the last"),
};

/// So much that the log is copied back several times by itself.
std::vector<Step> busyDay()
{
    std::vector<Step> steps;
    for (int i = 0; i < 25; ++i) {
        steps.push_back(
            save("busy " + QByteArray::number(i) + QByteArray(1 + i * 7919 % 60'000, 'b'), 14));
    }
    return steps;
}

void rescue(HistoryFile& history)
{
    if (const QString damaged = unfinishedRescue(history); !damaged.isEmpty()) {
        (void)history.database().rescue(damaged, 1000);
    }
}

Step rescueSome(bool isTheEnd = false)
{
    return {
        [](HistoryFile& history) {
            (void)history.database().rescueSome(unfinishedRescue(history), 1000);
        },
        isTheEnd};
}

/// Whoever has been told that it is done may delete the file that it came from.
Step import(const char* first, const char* second)
{
    return {
        [first, second](HistoryFile& history) {
            QByteArray lines;
            for (const char* const text : {first, second}) {
                Clip clip = textClip(text);
                clip.createdAt = clip.lastUsedAt = 1'000'000;
                lines += lineOf(clip);
            }
            EXPECT_EQ(history.database().importLines(lines, 1000).added, 2);
        },
        true};
}

INSTANTIATE_TEST_SUITE_P(
    ofA, ClipPowerLoss,
    testing::Values(
        Day{.name = "usualDay", .fill = fillUsually, .steps = usualDay, .deletesTheSecret = true},
        Day{.name = "busyDay", .fill = fillUsually, .steps = busyDay(), .stride = 199, .rounds = 1},
        Day{.name = "firstDay", .fill = [](HistoryFile&) {}, .steps = {save("one"), save("two")}},
        Day{.name = "clearInParts",
            .fill = fillWithMany,
            .steps =
                {save("one"),
                 {[](HistoryFile& history) { history.database().clear(true); }, true,
                  [](const QStringList& before) { return before.mid(1000); }},
                 save("two")}},
        Day{.name = "import",
            .fill = fillUsually,
            .steps = {save("one"), import("two", "three"), save("four"), import("five", "six")}},
        Day{.name = "rescue",
            .fill = fillAndDamage,
            .steps = {rescueSome(), rescueSome(), rescueSome(true)},
            .takeUp = rescue,
            .stride = 37}),
    [](const testing::TestParamInfo<Day>& info) { return std::string(info.param.name); });

} // namespace

} // namespace tessly::test
