#include "PayloadReader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessly {

namespace {

constexpr qint64 bytesPerMB = 1'048'576;
/// What an image that is still to be decoded may have, whatever the limit for a payload, and in
/// proportion to that.
constexpr qint64 undecodedBytes = 64 * bytesPerMB;
constexpr qint64 undecodedFactor = 4;

constexpr auto tooLarge = "it is larger than the configured maximum";
constexpr auto undecodable = "its image could not be read";
constexpr auto nothingReadable = "its owner handed over nothing of what can be recorded";

using Fields = ClipPayload::Fields;

constexpr std::array<std::pair<Flavour, std::optional<QByteArray> Fields::*>, 3> textFlavours = {{
    {Flavour::plainText, &Fields::plainText},
    {Flavour::rtf, &Fields::rtf},
    {Flavour::html, &Fields::html},
}};

qint64 byteCount(const QByteArray& bytes)
{
    return bytes.size();
}

qint64 byteCount(const QByteArrayList& list)
{
    qint64 count = 0;
    for (const QByteArray& bytes : list) {
        count += bytes.size();
    }
    return count;
}

/// Puts what was read of one flavour into its field and takes it off the bytes that may still be
/// read. If the whole content is to be dropped: why.
template <typename Value, typename Field>
const char* putInto(Field& field, ReadResult<Value> result, qint64& bytesLeft)
{
    switch (result.status) {
    case ReadStatus::read:
        bytesLeft -= byteCount(result.value);
        field = std::move(result.value);
        return bytesLeft < 0 ? tooLarge : nullptr;
    case ReadStatus::absent:
        return nullptr;
    case ReadStatus::tooLarge:
        return tooLarge;
    case ReadStatus::unreadable:
        return PayloadReader::unreadable;
    case ReadStatus::noMemory:
        return PayloadReader::noMemory;
    }
    Q_UNREACHABLE();
}

} // namespace

const char* const PayloadReader::unreadable = "its content could not be read in time";
const char* const PayloadReader::noMemory = "there was not enough memory for it";

qint64 PayloadReader::byteLimit() const
{
    const qint64 megabytes = std::clamp<qint64>(m_settings.maxItemSizeMB(), 1, 250);
    return megabytes * bytesPerMB;
}

QCoro::Task<PayloadReader::Content>
PayloadReader::read(qint64 changeCount, std::function<bool()> isWanted) const
{
    // By value: while it waits, only what they refer to is sure to be there.
    Pasteboard& pasteboard = m_pasteboard;
    const AppSettings& settings = m_settings;
    const qint64 byteLimit = this->byteLimit();
    qint64 bytesLeft = byteLimit;
    Content content;
    /// Whether to go on.
    const auto take = [&](auto result, auto& field) {
        content.loss = putInto(field, std::move(result), bytesLeft);
        content.isDropped = content.loss != nullptr;
        return !content.isDropped && isWanted();
    };

    for (const auto& [flavour, field] : textFlavours) {
        auto text = co_await pasteboard.read(changeCount, flavour, bytesLeft);
        if (!take(std::move(text), content.fields.*field)) {
            co_return content;
        }
    }
    if (settings.captureFiles()) {
        auto urls = co_await pasteboard.readFileURLs(changeCount, bytesLeft);
        if (!take(std::move(urls), content.fields.fileURLs)) {
            co_return content;
        }
    }
    // The icon of a copied file is not kept as an image, nor is the picture that spreadsheets and
    // word processors offer of their text: pasted back, it would come in the place of that.
    const bool isRendering = content.fields.plainText && content.fields.rtf;
    if (!settings.captureImages() || !content.fields.fileURLs.isEmpty() || isRendering) {
        co_return content;
    }
    auto png = co_await pasteboard.read(changeCount, Flavour::png, bytesLeft);
    if (!take(std::move(png), content.fields.imagePNG) || content.fields.imagePNG) {
        co_return content;
    }
    // What counts is the PNG that becomes of it. One that is too large is left out.
    bytesLeft = std::max(undecodedFactor * byteLimit, undecodedBytes);
    auto image = co_await pasteboard.read(changeCount, Flavour::otherImage, bytesLeft);
    const bool isTooLarge = image.status == ReadStatus::tooLarge;
    take(std::move(image), content.image);
    content.isDropped = content.isDropped && !isTooLarge;
    co_return content;
}

QCoro::Task<PayloadReader::Result> PayloadReader::payload(Content content) const
{
    const qint64 byteLimit = this->byteLimit();
    const bool isAllWanted = m_settings.captureFiles() && m_settings.captureImages();
    if (content.image && !content.isDropped) {
        content.fields.imagePNG = co_await m_imageConverter.pngData(*content.image);
        content.loss = content.fields.imagePNG ? nullptr : undecodable;
    }
    const ClipPayload payload(std::move(content.fields));
    if (payload.byteCount() > byteLimit) {
        content = {.loss = tooLarge, .isDropped = true};
    } else if (payload.isEmpty() && !content.loss && isAllWanted) {
        content.loss = nothingReadable;
    }
    if (content.isDropped || payload.isEmpty()) {
        co_return {.loss = content.loss};
    }
    co_return {.payload = payload};
}

} // namespace tessly
