#include "NoPasteboard.h"

namespace tessly {

QCoro::Task<> NoPasteboard::catchUp()
{
    co_return;
}

QCoro::Task<bool> NoPasteboard::holds(WriteTicket)
{
    co_return false;
}

QCoro::Task<std::optional<QSet<QString>>> NoPasteboard::types(qint64)
{
    co_return std::nullopt;
}

QCoro::Task<ReadResult<QByteArray>> NoPasteboard::read(qint64, Flavour, qint64)
{
    co_return {.status = ReadStatus::unreadable};
}

QCoro::Task<ReadResult<QByteArrayList>> NoPasteboard::readFileURLs(qint64, qint64)
{
    co_return {.status = ReadStatus::unreadable};
}

} // namespace tessly
