#pragma once

#include "Actor.h"
#include "ImageConverter.h"

#include <atomic>
#include <memory>

namespace tessly {

/// Decodes the image formats that Qt has plugins for. Which one it is is told from the bytes alone;
/// formats that can refer to other files, or that are programs of a kind, are not decoded.
class QtImageConverter final : public ImageConverter
{
public:
    /// The most that an image may take when decoded, in bytes: what fills the largest PNG that can
    /// be recorded, should nothing of it be packed. 65 million pixels of four bytes are one and a
    /// half 8K screens or the photograph of a camera of 60 megapixels. The whole process then
    /// decodes no image larger than that.
    static constexpr qint64 maximumDecodedBytes = qint64{250} << 20;

    /// Works on a thread of its own.
    QtImageConverter();
    explicit QtImageConverter(std::unique_ptr<Executor> executor);
    /// Waits for the image that is being converted, if any; those behind it end as none.
    ~QtImageConverter() override;

    /// Of several frames the first, and upright where the camera has noted how it was held.
    [[nodiscard]] QCoro::Task<std::optional<QByteArray>> pngData(QByteArray image) override;
    /// Read line by line where the format allows it, so that a large image takes little memory.
    [[nodiscard]] QCoro::Task<ScaledImage> scaled(QByteArray png, QSize bound) override;

private:
    std::shared_ptr<std::atomic<bool>> m_isEnding = std::make_shared<std::atomic<bool>>(false);
    Actor m_actor;
};

} // namespace tessly
