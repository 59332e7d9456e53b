#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QSize>

#include <optional>

namespace tessly {

/// What is seen of an image.
struct ScaledImage
{
    /// Of the image itself, in pixels; invalid if it cannot be decoded at all.
    QSize fullSize = {};
    /// What is seen, at the image's proportions.
    QSize size = {};
    /// Of that, row by row: 0xffRRGGBB in the machine's order of bytes. Empty if the image is
    /// damaged, or larger than the converter's bound.
    QByteArray pixels = {};
};

/// Decodes images. Main thread only; the work is done elsewhere.
class ImageConverter
{
public:
    ImageConverter() = default;
    ImageConverter(const ImageConverter&) = delete;
    ImageConverter& operator=(const ImageConverter&) = delete;
    virtual ~ImageConverter() = default;

    /// The image as PNG, or none if it cannot be decoded, or decodes to more than the converter's
    /// bound.
    [[nodiscard]] virtual QCoro::Task<std::optional<QByteArray>> pngData(QByteArray image) = 0;

    /// An image in PNG, reduced to fit into `bound` (not empty) where it is larger. Where it is
    /// transparent, a grey pattern is seen.
    [[nodiscard]] virtual QCoro::Task<ScaledImage> scaled(QByteArray png, QSize bound) = 0;
};

} // namespace tessly
