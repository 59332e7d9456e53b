#pragma once

#include "AppPaths.h"
#include "ClipDatabase.h"
#include "ClipStore.h"
#include "FaultVFS.h"
#include "HeldCheck.h"
#include "HistoryFile.h"
#include "InlineExecutor.h"
#include "LogCapture.h"
#include "ManualExecutor.h"
#include "MemoryFolder.h"
#include "QtPrinting.h"
#include "SQLiteHook.h"
#include "TestSupport.h"
#include "ThreadExecutor.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {

using namespace Qt::StringLiterals;

/// A store whose worker is still at the check of a history from before.
class ClipStoreOpeningTest : public testing::Test
{
protected:
    ~ClipStoreOpeningTest() override
    {
        // The store waits for it.
        if (m_check) {
            m_check->letGo();
        }
        m_store.reset();
        const auto isDone = [](const QCoro::Task<>& operation) { return operation.isReady(); };
        EXPECT_TRUE(waitUntil([&] { return std::ranges::all_of(m_notes, isDone); }));
    }

    /// The history from before: one clip for each text, the last the latest.
    std::vector<Clip> fill(const QByteArrayList& texts)
    {
        ClipDatabase database(m_path, [this] { return double(m_now++); });
        std::vector<Clip> clips;
        for (const QByteArray& plainText : texts) {
            clips.push_back(database.save(text(plainText), {}, {}, maximum));
        }
        return clips;
    }
    void executeSQL(const char* sql) const { SQLiteConnection(m_path).execute(sql); }

    /// Overwrites the first page on which these bytes are, or the first page of a table.
    void damage(const QByteArray& bytes)
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        const qsizetype page = file.readAll().indexOf(bytes) / pageSize;
        ASSERT_GT(page, 0);
        file.seek(page * pageSize);
        file.write(QByteArray(pageSize, 'x'));
    }
    void damageTable(const char* name)
    {
        qint64 page = 0;
        {
            const SQLiteConnection connection(m_path);
            ClipStatement statement(
                connection, "SELECT rootpage FROM sqlite_master WHERE name = ?;");
            ASSERT_TRUE(statement.text(1, name).next("no such table"));
            page = statement.row().integer(0);
        }
        QFile file(m_path);
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        file.seek((page - 1) * pageSize);
        file.write(QByteArray(pageSize, 'x'));
    }

    ClipStore::Means means()
    {
        return {
            .databasePath = m_path,
            .now = [this] { return double(m_now); },
            .executor = std::make_unique<ThreadExecutor>("store"),
            .makeReader = [] { return std::make_unique<ThreadExecutor>("reader"); },
            .setAside = [this] { return AppPaths::recoverDatabaseFiles(m_folder.path()); },
            .maximumHistory = maximum};
    }
    /// Opens it as far as to the check, which is held.
    void openHeld(ClipStore::Means means)
    {
        m_check.emplace();
        m_store = std::make_unique<ClipStore>(std::move(means));
        m_check->waitUntilBegun();
        ASSERT_TRUE(m_store->isOpening());
    }
    void openHeld() { openHeld(means()); }
    ClipStore::Opening letGo()
    {
        m_check->letGo();
        return await(m_store->opened());
    }
    QCoro::Task<ClipRescue> rescue(const ClipStore::Opening& opening)
    {
        return m_store->rescue(*opening.damagedFolder + u"/history.sqlite"_s, maximum);
    }
    /// As the next start finds it.
    std::vector<QByteArray> nextStart()
    {
        m_store.reset();
        m_check.reset();
        m_store = std::make_unique<ClipStore>(means());
        EXPECT_EQ(await(m_store->opened()), ClipStore::Opening());
        return listed();
    }

    QCoro::Task<Clip> save(const ClipPayload& payload)
    {
        ++m_now;
        return m_store->save(payload, u"Editor"_s, u"editor"_s, maximum);
    }
    QCoro::Task<Clip> save(const QByteArray& plainText) { return save(text(plainText)); }
    std::vector<Clip> list(const QString& query = {}, std::optional<ClipKind> kind = {})
    {
        return await(m_store->search(query, kind, -1));
    }
    std::vector<QByteArray> listed(const QString& query = {})
    {
        std::vector<QByteArray> texts;
        for (const Clip& clip : list(query)) {
            const ClipPayload* const payload = clip.payload.held();
            texts.push_back(payload ? payload->plainText().value_or("no text") : "not held");
        }
        return texts;
    }
    /// Notes the end of an operation under a name.
    template <typename Result>
    void note(QCoro::Task<Result> operation, const char* name)
    {
        m_notes.push_back(whenNoted(std::move(operation), name));
    }
    template <typename Result>
    QCoro::Task<> whenNoted(QCoro::Task<Result> operation, const char* name)
    {
        try {
            co_await operation;
            m_done.emplace_back(name);
        } catch (const std::exception& error) {
            m_done.push_back(std::string(name) + ": " + error.what());
        }
    }

    static ClipPayload text(const QByteArray& text) { return ClipPayload({.plainText = text}); }
    static ClipPayload megabytes(qsizetype count, char fill)
    {
        return ClipPayload({.imagePNG = QByteArray(count * 1'000'000, fill)});
    }
    static QStringList logged(const LogCapture& log)
    {
        QStringList lines;
        for (const LogCapture::Line& line : log.lines(u"com.brackmoor.tessly.ClipStore"_s)) {
            lines.append(line.text);
        }
        return lines;
    }

    static constexpr qint64 maximum = 500;
    static constexpr qsizetype pageSize = HistoryFile::pageSize;
    static inline const QString givenUp =
        u"A copy was not recorded: Too much was copied while the history was being checked."_s;

    MemoryFolder m_folder;
    QString m_path = m_folder.filePath(u"history.sqlite"_s);
    std::atomic<qint64> m_now = 1'000;
    std::optional<HeldCheck> m_check;
    std::unique_ptr<ClipStore> m_store;
    std::vector<std::string> m_done;
    std::vector<QCoro::Task<>> m_notes;
};

} // namespace tessly::test
