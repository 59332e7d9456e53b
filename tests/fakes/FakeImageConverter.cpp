#include "FakeImageConverter.h"

#include <new>

namespace tessly::test {

namespace {

constexpr QByteArrayView imagePrefix = "image:";
constexpr QByteArrayView pngSignature = "\x89PNG\r\n\x1a\n";

} // namespace

QByteArray FakeImageConverter::image(QByteArrayView name)
{
    return imagePrefix.toByteArray().append(name);
}

QByteArray FakeImageConverter::png(QByteArrayView name)
{
    return pngSignature.toByteArray().append(name);
}

QByteArray FakeImageConverter::imageBeyondMemory()
{
    return QByteArrayLiteral("huge");
}

QCoro::Task<std::optional<QByteArray>> FakeImageConverter::pngData(QByteArray image)
{
    ++m_conversions;
    co_await m_gate.pass();
    if (image == imageBeyondMemory()) {
        throw std::bad_alloc();
    }
    if (!image.startsWith(imagePrefix)) {
        co_return std::nullopt;
    }
    co_return png(QByteArrayView(image).sliced(imagePrefix.size()));
}

QCoro::Task<ScaledImage> FakeImageConverter::scaled(QByteArray png, QSize bound)
{
    m_scalings.push_back(png);
    co_await m_gate.pass();
    if (!png.startsWith(pngSignature)) {
        co_return ScaledImage();
    }
    co_return ScaledImage{
        .fullSize = bound * 2,
        .size = bound,
        // Grey, and opaque.
        .pixels =
            QByteArray("\x7f\x7f\x7f\xff").repeated(qsizetype{bound.width()} * bound.height())};
}

} // namespace tessly::test
