#pragma once

#include "Pasteboard.h"

namespace tessly {

/// A desktop that keeps its clipboard to itself: nothing is ever read or written.
class NoPasteboard final : public Pasteboard
{
public:
    /// Another one each time: whether anything has been copied is not told, and whoever looks is to
    /// find that access is denied.
    [[nodiscard]] qint64 changeCount() const override { return ++m_looks; }
    [[nodiscard]] Clock::Duration contentAge() const override { return {}; }
    [[nodiscard]] bool notifiesOfChanges() const override { return false; }
    void setChanged(std::function<void()>) override {}
    [[nodiscard]] QCoro::Task<> catchUp() override;
    [[nodiscard]] PasteboardAccess access() const override { return PasteboardAccess::denied; }
    [[nodiscard]] QCoro::Task<std::optional<QSet<QString>>> types(qint64 changeCount) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArray>>
    read(qint64 changeCount, Flavour flavour, qint64 byteLimit) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArrayList>>
    readFileURLs(qint64 changeCount, qint64 byteLimit) override;
    [[nodiscard]] WriteTicket write(std::vector<PasteboardItem>) override { return {}; }
    [[nodiscard]] QCoro::Task<bool> holds(WriteTicket ticket) override;
    [[nodiscard]] int copiesMissed(qint64, Clock::Duration) const override { return 0; }
    [[nodiscard]] bool followsOwnerThatLeft(qint64) const override { return false; }
    [[nodiscard]] quint64 fetchCount() const override { return 0; }
    void clear() override {}
    void keepWhenOwnerLeaves(qint64, std::vector<PasteboardItem>, HasSourceEnded) override {}

private:
    mutable qint64 m_looks = 0;
};

} // namespace tessly
