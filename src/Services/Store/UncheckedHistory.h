#pragma once

#include "SQLiteConnection.h"
#include "WaitingCopies.h"

#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <vector>

namespace tessly {

class ClipDatabase;

/// Reads a history while another connection still checks it, and changes nothing. What fails here,
/// for damage or because the file is not there yet, is no error: it is to be asked for again when
/// the check is over. Any thread.
class UncheckedHistory
{
public:
    explicit UncheckedHistory(QString path);
    ~UncheckedHistory();
    UncheckedHistory(const UncheckedHistory&) = delete;
    UncheckedHistory& operator=(const UncheckedHistory&) = delete;

    /// What `read` returns of the history as if `waiting` had been saved; none if it throws
    /// ClipStoreError, or after the end. Throws only that it was interrupted.
    template <typename Read>
    [[nodiscard]] auto read(const std::vector<WaitingCopy>& waiting, Read& read)
        -> std::optional<std::invoke_result_t<Read&, ClipDatabase&>>
    {
        std::optional<std::invoke_result_t<Read&, ClipDatabase&>> found;
        withDatabase(waiting, [&](ClipDatabase& database) { found.emplace(read(database)); });
        return found;
    }

    /// Closes the file, after what is being read. From then on nothing is read.
    void end();

private:
    void withDatabase(
        const std::vector<WaitingCopy>& waiting, const std::function<void(ClipDatabase&)>& read);

    QString m_path;
    std::mutex m_mutex;
    bool m_isOver = false;
    std::unique_ptr<ClipDatabase> m_database;
};

} // namespace tessly
