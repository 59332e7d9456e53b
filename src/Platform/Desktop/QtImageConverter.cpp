#include "QtImageConverter.h"

#include "ThreadExecutor.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <array>
#include <new>

namespace tessly {

namespace {

using IsEnding = std::shared_ptr<std::atomic<bool>>;

constexpr auto decodedFormats =
    std::to_array<QByteArrayView>({"tiff", "bmp", "jpeg", "webp", "gif", "png"});

// The bytes of a pixel in the widest format that decoders give for photographs and screen shots.
constexpr qint64 bytesPerPixel = 4;

QImage decoded(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QByteArray format = reader.format();
    if (std::ranges::find(decodedFormats, QByteArrayView(format)) == decodedFormats.end()) {
        return {};
    }
    // Formats that do not tell their size are bounded by the reader's own limit on allocations.
    const QSize size = reader.size();
    if (qint64{size.width()} * size.height() * bytesPerPixel >
        QtImageConverter::maximumDecodedBytes) {
        return {};
    }
    return reader.read();
}

std::optional<QByteArray> converted(QByteArray bytes, const IsEnding& isEnding)
{
    if (*isEnding) {
        return std::nullopt;
    }
    const QImage image = decoded(std::move(bytes));
    if (image.isNull() || *isEnding) {
        return std::nullopt;
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!QImageWriter(&buffer, "png").write(image)) {
        return std::nullopt;
    }
    return png;
}

/// Other programs decide how large their images are: one for which there is not enough memory is
/// one that cannot be converted.
std::optional<QByteArray> convertedWithinMemory(QByteArray bytes, const IsEnding& isEnding)
{
    try {
        return converted(std::move(bytes), isEnding);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace

QtImageConverter::QtImageConverter()
    : QtImageConverter(std::make_unique<ThreadExecutor>("images"))
{
}

QtImageConverter::QtImageConverter(std::unique_ptr<Executor> executor)
    : m_actor(std::move(executor))
{
    QImageReader::setAllocationLimit(static_cast<int>(maximumDecodedBytes >> 20));
}

QtImageConverter::~QtImageConverter()
{
    *m_isEnding = true;
}

QCoro::Task<std::optional<QByteArray>> QtImageConverter::pngData(QByteArray image)
{
    auto png = m_actor.run([image = std::move(image), isEnding = m_isEnding]() mutable {
        return convertedWithinMemory(std::exchange(image, {}), isEnding);
    });
    co_return co_await png;
}

} // namespace tessly
