#include "QtImageConverter.h"

#include "ThreadExecutor.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

#include <array>
#include <new>

namespace tessly {

namespace {

using IsEnding = std::shared_ptr<std::atomic<bool>>;

constexpr auto decodedFormats =
    std::to_array<QByteArrayView>({"tiff", "bmp", "jpeg", "webp", "gif", "png"});

// The bytes of a pixel in the widest format that decoders give for photographs and screen shots.
constexpr qint64 bytesPerPixel = 4;

// What shows through where an image is transparent, in pixels and as greys on which black and white
// are both seen.
constexpr int checkSize = 8;
constexpr QRgb lightCheck = qRgb(0xD6, 0xD6, 0xD6);
constexpr QRgb darkCheck = qRgb(0xB4, 0xB4, 0xB4);

bool isWithinBound(const QSize& size)
{
    return qint64{size.width()} * size.height() * bytesPerPixel <=
           QtImageConverter::maximumDecodedBytes;
}

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
    return isWithinBound(reader.size()) ? reader.read() : QImage();
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

QImage overChecks(const QImage& image)
{
    QImage opaque(image.size(), QImage::Format_RGB32);
    for (int y = 0; y < opaque.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(opaque.scanLine(y));
        for (int x = 0; x < opaque.width(); ++x) {
            line[x] = (x / checkSize + y / checkSize) % 2 == 0 ? lightCheck : darkCheck;
        }
    }
    QPainter(&opaque).drawImage(0, 0, image);
    return opaque;
}

ScaledImage scaledImage(QByteArray png, const QSize& bound)
{
    QBuffer buffer(&png);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    reader.setAutoDetectImageFormat(false);
    const QSize fullSize = reader.size();
    if (fullSize.isEmpty()) {
        return {};
    }
    const bool fits = fullSize.width() <= bound.width() && fullSize.height() <= bound.height();
    // A very long one is still a pixel wide.
    const QSize size =
        fits ? fullSize : fullSize.scaled(bound, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    if (!isWithinBound(fullSize)) {
        return {.fullSize = fullSize};
    }
    if (!fits) {
        reader.setScaledSize(size);
    }
    const QImage image = reader.read();
    if (image.isNull()) {
        return {.fullSize = fullSize};
    }
    const QImage opaque =
        image.hasAlphaChannel() ? overChecks(image) : image.convertToFormat(QImage::Format_RGB32);
    return {
        .fullSize = fullSize,
        .size = opaque.size(),
        .pixels =
            QByteArray(reinterpret_cast<const char*>(opaque.constBits()), opaque.sizeInBytes())};
}

ScaledImage scaledWithinMemory(QByteArray png, const QSize& bound, const IsEnding& isEnding)
{
    try {
        return *isEnding ? ScaledImage() : scaledImage(std::move(png), bound);
    } catch (const std::bad_alloc&) {
        return {};
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

QCoro::Task<ScaledImage> QtImageConverter::scaled(QByteArray png, QSize bound)
{
    auto image = m_actor.run([png = std::move(png), bound, isEnding = m_isEnding]() mutable {
        return scaledWithinMemory(std::exchange(png, {}), bound, isEnding);
    });
    co_return co_await image;
}

} // namespace tessly
