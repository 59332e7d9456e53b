#include "FaultReport.h"
#include "HistoryFile.h"
#include "LogCapture.h"
#include "QtPrinting.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

// Operations at random on a history, and on a list in memory that has to agree with it after each.
// With TESSLY_ALL_FAULTS in the environment tens of thousands of them; TESSLY_SEED repeats a run.

namespace tessly::test {

namespace {

/// What a history is to hold, as plainly as can be said.
class Model
{
public:
    void save(const Clip& saved, double now, std::size_t maximum)
    {
        dateBefore(now);
        const auto known = std::ranges::find(m_clips, saved.payload, &Clip::payload);
        if (known != m_clips.end()) {
            known->lastUsedAt = now;
            known->sourceAppName = saved.sourceAppName;
            ++known->copyCount;
        } else {
            m_clips.push_back(saved);
        }
        trim(maximum);
    }
    void trim(std::size_t maximum)
    {
        std::vector<Clip> kept;
        std::size_t unpinned = 0;
        for (const Clip& clip : list()) {
            if (clip.isPinned || unpinned++ < maximum) {
                kept.push_back(clip);
            }
        }
        m_clips = kept;
    }
    void setPinned(bool pinned, QUuid id)
    {
        const double order = nextPinOrder();
        at(id).pinOrder = pinned ? std::optional(order) : std::nullopt;
        at(id).isPinned = pinned;
    }
    void use(QUuid id, double now)
    {
        dateBefore(now);
        at(id).lastUsedAt = now;
        if (at(id).isPinned) {
            at(id).pinOrder = nextPinOrder();
        }
    }
    void remove(QUuid id) { std::erase(m_clips, at(id)); }
    void clear(bool includePinned)
    {
        std::erase_if(m_clips, [=](const Clip& clip) { return includePinned || !clip.isPinned; });
    }

    std::vector<Clip> list() const
    {
        std::vector<Clip> sorted = m_clips;
        std::ranges::stable_sort(sorted, std::ranges::greater(), [](const Clip& clip) {
            return std::tuple(clip.isPinned, clip.pinOrder.value_or(0), clip.lastUsedAt);
        });
        return sorted;
    }

private:
    Clip& at(QUuid id) { return *std::ranges::find(m_clips, id, &Clip::id); }
    double nextPinOrder() const
    {
        double largest = 0;
        for (const Clip& clip : m_clips) {
            largest = std::max(largest, clip.pinOrder.value_or(0));
        }
        return largest + 1;
    }
    /// What another clock dated later than now comes to just before now, in its order.
    void dateBefore(double now)
    {
        std::vector<Clip*> later;
        for (Clip& clip : m_clips) {
            later.push_back(&clip);
        }
        std::ranges::stable_sort(later, std::ranges::greater(), &Clip::lastUsedAt);
        double next = now;
        for (Clip* const clip : later) {
            if (clip->lastUsedAt < next) {
                break;
            }
            next -= 1e-6;
            clip->lastUsedAt = next;
            clip->createdAt = std::min(clip->createdAt, next);
        }
    }

    std::vector<Clip> m_clips;
};

QStringList lines(const std::vector<Clip>& clips)
{
    QStringList lines;
    for (const Clip& clip : clips) {
        lines.append(u"%1 pinned %2 %3 copied %4"_s.arg(clip.payload.previewLine())
                         .arg(clip.isPinned)
                         .arg(clip.pinOrder.value_or(0))
                         .arg(clip.copyCount));
    }
    return lines;
}

} // namespace

TEST(ClipRandom, operationsAgreeWithAListInMemory)
{
    const unsigned seed = randomSeed();
    QRandomGenerator random(seed);
    const LogCapture log;
    HistoryFile history;
    history.open();
    Model model;
    const int steps = triesAllFaults() ? 30'000 : 1500;
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE("seed " + std::to_string(seed) + " step " + std::to_string(step));
        const std::vector<Clip> before = model.list();
        const auto any = [&] {
            return before[static_cast<std::size_t>(random.bounded(static_cast<int>(before.size())))]
                .id;
        };
        const int dice = random.bounded(100);
        if (dice < 50 || before.empty()) {
            const int maximum = random.bounded(10, 40);
            const QByteArray text = "word" + QByteArray::number(random.bounded(60)) + " common";
            const double now = history.now;
            const Clip saved = history.saveText(text, maximum);
            EXPECT_EQ(saved.lastUsedAt, now);
            model.save(saved, now, static_cast<std::size_t>(maximum));
        } else if (dice < 60) {
            const bool pinned = random.bounded(3) > 0;
            const QUuid id = any();
            history.database().setPinned(pinned, id);
            model.setPinned(pinned, id);
        } else if (dice < 70) {
            const QUuid id = any();
            const double now = history.now;
            history.database().markUsed(id, true);
            model.use(id, now);
        } else if (dice < 80) {
            const QUuid id = any();
            history.database().remove(id);
            model.remove(id);
        } else if (dice < 82) {
            const bool includePinned = random.bounded(4) == 0;
            history.database().clear(includePinned);
            model.clear(includePinned);
        } else if (dice < 85) {
            history.database().trimHistory(15);
            model.trim(15);
        } else if (dice < 90) {
            history.now += random.bounded(-5000, 5000);
        } else if (dice < 93) {
            history.open();
        } else if (dice < 96) {
            EXPECT_EQ(history.database().scrub(), ClipStore::Upkeep::done);
        } else {
            const QByteArray word = "word" + QByteArray::number(random.bounded(60));
            // The index knows words by their beginnings, and the scan finds what it does not.
            for (const QByteArray& query : {word, word.mid(1) + " common", QByteArray("%_")}) {
                std::vector<Clip> expected = before;
                std::erase_if(expected, [&](const Clip& clip) {
                    return !clip.payload.held()->plainText()->contains(query);
                });
                const std::vector<Clip> found =
                    history.database().search(QString::fromLatin1(query), std::nullopt, -1);
                EXPECT_EQ(lines(found), lines(expected)) << query.constData();
            }
        }
        const std::vector<Clip> found = history.database().search({}, std::nullopt, -1);
        ASSERT_EQ(lines(found), lines(model.list()));
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
    history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    // What the index has to say of itself, since a mended one passes as well.
    for (const LogCapture::Line& line : log.lines(u"com.brackmoor.tessly.ClipStore"_s)) {
        ADD_FAILURE() << line.text.toStdString();
    }
    reportFaults("operations at random", {{"as the list in memory", steps}});
}

} // namespace tessly::test
