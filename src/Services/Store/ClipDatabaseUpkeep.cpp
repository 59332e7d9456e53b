#include "ClipDatabase.h"

#include "AppPaths.h"
#include "SQLiteResidue.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QScopeGuard>

#include <chrono>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

// What saves drop is wiped when it is this part of the history.
constexpr qint64 partTrimmedAtOnce = 10;

// Free pages are given back to the disk if there are at least so many, 1 MB as a rule, and they are
// this part of the file.
constexpr qint64 leastPagesToGiveBack = 512;
constexpr qint64 partToGiveBack = 10;

// Another process that lists the history is done sooner.
constexpr std::chrono::milliseconds readerTimeout(200);

} // namespace

ClipRescue ClipDatabase::rescue(const QString& damagedPath, qint64 maximumHistory)
{
    for (;;) {
        if (const std::optional<ClipRescue> rescue = rescueSome(damagedPath, maximumHistory)) {
            return *rescue;
        }
    }
}

std::optional<ClipRescue>
ClipDatabase::rescueSome(const QString& damagedPath, qint64 maximumHistory)
{
    requireFile();
    try {
        if (m_rescued != damagedPath) {
            m_rescuer = std::make_unique<ClipRescuer>(damagedPath, m_connection, maximumHistory);
            m_rescued = damagedPath;
        }
        if (m_rescuer && !m_rescuer->isDone()) {
            withIndexMended([this] { m_rescuer->copySome(); });
            return std::nullopt;
        }
        return endRescue();
    } catch (const SQLiteError& error) {
        if (m_rescued != damagedPath && !isHindrance(error.code())) {
            // It could not be opened, nor will it be at the next start.
            AppPaths::finishRecovery(QFileInfo(damagedPath).path());
        }
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
}

ClipRescue ClipDatabase::endRescue()
{
    if (!m_rescuer) {
        // The history was cleared meanwhile.
        return {};
    }
    const ClipRescue rescue = m_rescuer->outcome();
    qCWarning(
        lcStore, "Of %lld clips in a damaged history, %lld were brought over",
        static_cast<long long>(rescue.found), static_cast<long long>(rescue.kept));
    // In this order: a rescue that is finished and begins once more could bring back what the user
    // deletes from now on.
    if (AppPaths::finishRecovery(QFileInfo(m_rescued).path())) {
        m_rescuer->forgetProgress();
    }
    m_rescuer.reset();
    m_rescued.clear();
    return rescue;
}

void ClipDatabase::abandonRescue()
{
    m_rescuer.reset();
    // Also one that could not begin yet: it would bring back what was cleared.
    const QString folder = QFileInfo(m_path).absolutePath();
    while (const std::optional<QString> rescue = AppPaths::unfinishedRecovery(folder)) {
        if (!AppPaths::finishRecovery(*rescue)) {
            throw ClipStoreError(
                ClipStoreError::Case::execute,
                u"What is being brought over from ‘%1’ could not be ended."_s.arg(*rescue));
        }
        qCInfo(lcStore, "Nothing more is brought over from a damaged history: it was cleared");
    }
}

void ClipDatabase::tidyUp()
{
    // The clips are gone from the history; what fails from here on does not bring them back, and
    // must not be taken for a deletion that failed.
    try {
        withIndexMended([this] { execute("PRAGMA incremental_vacuum(32);"); });
        if (wipe() == Upkeep::done) {
            return;
        }
        qCInfo(lcStore, "Another process reads the history: deleted clips will be wiped later");
    } catch (const ClipStoreError& error) {
        qCWarning(lcStore, "Deleted clips are not wiped yet: %s", error.what());
    }
}

ClipStore::Upkeep ClipDatabase::scrub(const std::function<bool()>& isHurried)
{
    // What the user deleted does not wait for a look at the whole index.
    const Upkeep wiped = isWipingDue() ? wipe() : Upkeep::done;
    if (!m_isIndexChecked) {
        if (!checkIndex(isHurried)) {
            return Upkeep::hindered;
        }
        if (isWipingDue() && wipe() == Upkeep::hindered) {
            return Upkeep::hindered;
        }
    }
    return wiped == Upkeep::done && shrink(isHurried) ? Upkeep::done : Upkeep::hindered;
}

qint64 ClipDatabase::number(const char* pragma)
{
    ClipStatement statement = prepare(pragma);
    return statement.next("Could not read database size") ? statement.row().integer(0) : 0;
}

bool ClipDatabase::shrink(const std::function<bool()>& isHurried)
{
    // A little room is used again by the next copies; to give it back would move pages for nothing.
    qint64 free = number("PRAGMA freelist_count;");
    if (free < leastPagesToGiveBack || free < number("PRAGMA page_count;") / partToGiveBack) {
        return true;
    }
    while (free > 0) {
        if (isHurried && isHurried()) {
            return false;
        }
        execute("PRAGMA incremental_vacuum(32);");
        const qint64 left = number("PRAGMA freelist_count;");
        if (left >= free) {
            // A file that was made without a map of its pages keeps them.
            return true;
        }
        free = left;
    }
    // The file is cut when the log has been copied back.
    return emptyLog();
}

bool ClipDatabase::isWipingDue()
{
    if (m_hasResidue || m_trimmed == 0) {
        return m_hasResidue;
    }
    // The index is rewritten as a whole for that. Once for a tenth of the clips that it has, each
    // copy comes to the bytes of ten of them; what is left at the end goes after the next start.
    return m_trimmed >= statistics().totalItems / partTrimmedAtOnce;
}

bool ClipDatabase::checkIndex(const std::function<bool()>& isHurried)
{
    std::optional<SQLiteConnection::StopWatch> watch;
    if (isHurried) {
        if (isHurried()) {
            return false;
        }
        watch.emplace(m_connection, isHurried);
    }
    try {
        if (!m_index.isAvailable()) {
            m_index.attach();
        }
        if (m_index.isAvailable()) {
            m_index.check();
        }
        m_isIndexChecked = true;
    } catch (const ClipStoreError& error) {
        watch.reset();
        if (!mendIndex(error)) {
            // It was interrupted, or something else stood in the way.
            return false;
        }
        m_isIndexChecked = true;
    }
    return true;
}

ClipStore::Upkeep ClipDatabase::wipe()
{
    // A word of a deleted clip stays in the index until its part of the index is merged with the
    // note that it is deleted.
    withIndexMended([this] {
        if (m_index.isAvailable()) {
            m_index.optimize();
        }
    });
    // A deleted row's pages stay in the log as they were written once, and in the file until the
    // log is copied back.
    if (!emptyLog()) {
        return Upkeep::hindered;
    }
    try {
        m_hasResidue = !eraseResidue(m_connection);
    } catch (const SQLiteError& error) {
        throw ClipStoreError(ClipStoreError::Case::execute, error.message(), error.code());
    }
    if (m_hasResidue) {
        return Upkeep::hindered;
    }
    m_trimmed = 0;
    return Upkeep::done;
}

bool ClipDatabase::emptyLog()
{
    // Who reads for long is not waited for: the log can be emptied another time.
    m_connection.setBusyTimeout(readerTimeout);
    const auto restore = qScopeGuard([this] { m_connection.setBusyTimeout(busyTimeout); });
    ClipStatement checkpoint = prepare("PRAGMA wal_checkpoint(TRUNCATE);");
    return checkpoint.next("Could not update clipboard history") &&
           checkpoint.row().integer(0) == 0;
}

} // namespace tessly
