#pragma once

#include "Gate.h"
#include "ImageConverter.h"

namespace tessly::test {

/// A converter for images of a format of its own: `image(name)` becomes `png(name)`, anything else
/// cannot be decoded. For `imageBeyondMemory` there is not enough memory.
class FakeImageConverter final : public ImageConverter
{
public:
    [[nodiscard]] static QByteArray image(QByteArrayView name);
    [[nodiscard]] static QByteArray png(QByteArrayView name);

    [[nodiscard]] static QByteArray imageBeyondMemory();

    [[nodiscard]] std::size_t conversions() const { return m_conversions; }
    [[nodiscard]] Gate& gate() { return m_gate; }

    [[nodiscard]] QCoro::Task<std::optional<QByteArray>> pngData(QByteArray image) override;

private:
    std::size_t m_conversions = 0;
    Gate m_gate;
};

} // namespace tessly::test
