#pragma once

#include "HistoryFile.h"

#include <QFile>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

namespace tessly::test {

/// A history, and ways to spoil it from outside.
class ClipFaults : public testing::Test
{
protected:
    /// The error that `action` must throw.
    static ClipStoreError errorOf(const std::function<void()>& action)
    {
        try {
            action();
        } catch (const ClipStoreError& error) {
            return error;
        }
        throw std::runtime_error("nothing was thrown");
    }

    std::vector<Clip> all() { return history.database().search({}, std::nullopt, -1); }

    void fill(int clips)
    {
        for (int i = 0; i < clips; ++i) {
            history.saveText("text " + QByteArray::number(i) + QByteArray(500, 'x'));
        }
    }

    QByteArray bytes()
    {
        QFile file(history.path());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }
    void setBytes(const QByteArray& bytes)
    {
        QFile file(history.path());
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(bytes);
    }

    void expectSound()
    {
        EXPECT_EQ(history.ask("PRAGMA integrity_check"), QByteArrayList({"ok"}));
        history.execute("INSERT INTO clips_fts (clips_fts, rank) VALUES ('integrity-check', 1)");
    }

    HistoryFile history;
};

} // namespace tessly::test
