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
    [[nodiscard]] PasteboardAccess access() const override { return PasteboardAccess::denied; }
    [[nodiscard]] QCoro::Task<std::optional<QSet<QString>>> types(qint64 changeCount) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArray>>
    read(qint64 changeCount, Flavour flavour, qint64 byteLimit) override;
    [[nodiscard]] QCoro::Task<ReadResult<QByteArrayList>>
    readFileURLs(qint64 changeCount, qint64 byteLimit) override;
    [[nodiscard]] bool write(std::vector<PasteboardItem>) override { return false; }
    void clear() override {}
    void keepWhenOwnerLeaves(qint64, std::vector<PasteboardItem>) override {}

private:
    mutable qint64 m_looks = 0;
};

} // namespace tessly
