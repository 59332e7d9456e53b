#include "WaitingCopies.h"

#include <QLoggingCategory>

#include <algorithm>
#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStore, "com.brackmoor.tessly.ClipStore")

} // namespace

const char* CopyGivenUp::what() const noexcept
{
    return "Too much was copied while the history was being checked.";
}

WaitingCopies::~WaitingCopies() = default;

QFuture<Clip> WaitingCopies::add(WaitingCopy copy)
{
    const std::scoped_lock lock(m_mutex);
    Waiting waiting{std::move(copy), {}};
    waiting.saved.start();
    QFuture<Clip> saved = waiting.saved.future();
    const qint64 bytes = waiting.copy.payload.byteCount();
    if (bytes > mostBytes) {
        giveUp(waiting);
        return saved;
    }
    m_waiting.push_back(std::move(waiting));
    m_bytes += bytes;
    while (m_bytes > mostBytes) {
        m_bytes -= m_waiting.front().copy.payload.byteCount();
        giveUp(m_waiting.front());
        m_waiting.pop_front();
    }
    return saved;
}

void WaitingCopies::giveUp(Waiting& waiting)
{
    const CopyGivenUp reason;
    qCWarning(lcStore, "A copy was not recorded: %s", reason.what());
    waiting.saved.setException(std::make_exception_ptr(reason));
    waiting.saved.finish();
}

std::optional<WaitingCopies::Waiting> WaitingCopies::take(QUuid id)
{
    const std::scoped_lock lock(m_mutex);
    const auto found =
        std::ranges::find(m_waiting, id, [](const Waiting& waiting) { return waiting.copy.id; });
    if (found == m_waiting.end()) {
        return std::nullopt;
    }
    std::optional<Waiting> taken(std::move(*found));
    m_waiting.erase(found);
    m_bytes -= taken->copy.payload.byteCount();
    return taken;
}

std::vector<WaitingCopy> WaitingCopies::all() const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<WaitingCopy> copies;
    copies.reserve(m_waiting.size());
    std::ranges::transform(m_waiting, std::back_inserter(copies), &Waiting::copy);
    return copies;
}

} // namespace tessly
