#pragma once

#include "Gate.h"
#include "ImageConverter.h"

#include <vector>

namespace tessly::test {

/// A converter for images of a format of its own: `image(name)` becomes `png(name)`, anything else
/// cannot be decoded. For `imageBeyondMemory` there is not enough memory. What is `scaled` is shown
/// as large as it may be, and counts as twice that; what is no `png` cannot be decoded.
class FakeImageConverter final : public ImageConverter
{
public:
    [[nodiscard]] static QByteArray image(QByteArrayView name);
    [[nodiscard]] static QByteArray png(QByteArrayView name);

    [[nodiscard]] static QByteArray imageBeyondMemory();

    [[nodiscard]] std::size_t conversions() const { return m_conversions; }
    [[nodiscard]] Gate& gate() { return m_gate; }

    [[nodiscard]] QCoro::Task<std::optional<QByteArray>> pngData(QByteArray image) override;
    [[nodiscard]] QCoro::Task<ScaledImage> scaled(QByteArray png, QSize bound) override;
    /// The images that were scaled, or begun to be, in order.
    [[nodiscard]] const std::vector<QByteArray>& scalings() const { return m_scalings; }

private:
    std::size_t m_conversions = 0;
    std::vector<QByteArray> m_scalings;
    Gate m_gate;
};

} // namespace tessly::test
