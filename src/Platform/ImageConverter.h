#pragma once

#include <QByteArray>
#include <QCoroTask>

#include <optional>

namespace tessly {

/// Turns images into PNG. Main thread only; the work is done elsewhere.
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
};

} // namespace tessly
