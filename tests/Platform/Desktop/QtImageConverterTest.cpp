#include "QtImageConverter.h"
#include "ManualExecutor.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

QImage picture()
{
    QImage image(60, 40, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixelColor(x, y, QColor(4 * x, 6 * y, 100, y < 20 ? 255 : 128));
        }
    }
    return image;
}

QByteArray encoded(
    const QImage& image, const char* format, QImageIOHandler::Transformations transformation = {})
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setTransformation(transformation);
    writer.setQuality(100);
    EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
    return bytes;
}

std::optional<QByteArray> converted(const QByteArray& bytes)
{
    QtImageConverter converter;
    return await(converter.pngData(bytes));
}

QImage convertedImage(const QByteArray& bytes)
{
    const auto png = converted(bytes);
    if (!png) {
        ADD_FAILURE() << "not converted";
        return {};
    }
    EXPECT_TRUE(png->startsWith("\x89PNG\r\n\x1a\n"_ba));
    return QImage::fromData(*png, "png").convertToFormat(QImage::Format_ARGB32);
}

/// A small image that claims to be a huge one.
QByteArray inflated(const char* format)
{
    QByteArray bytes = encoded(picture().convertToFormat(QImage::Format_RGB32), format);
    if (QByteArrayView(format) == QByteArrayView("bmp")) {
        // 60,000 by 60,000, little-endian, at the header's offsets of width and height.
        bytes.replace(18, 8, "\x60\xEA\0\0\x60\xEA\0\0"_ba);
    } else {
        // Start of frame, baseline: marker, length, precision, then height and width.
        const qsizetype frame = bytes.indexOf("\xFF\xC0"_ba);
        bytes.replace(frame + 5, 4, "\xEA\x60\xEA\x60"_ba);
    }
    return bytes;
}

} // namespace

TEST(QtImageConverter, losslessFormatsKeepEveryPixel)
{
    const QImage opaque =
        picture().convertToFormat(QImage::Format_RGB32).convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(convertedImage(encoded(opaque, "tiff")), opaque);
    EXPECT_EQ(convertedImage(encoded(opaque, "bmp")), opaque);
    EXPECT_EQ(convertedImage(encoded(picture(), "webp")).size(), picture().size());
    // Half transparent pixels stay so; their colours are rounded.
    EXPECT_EQ(convertedImage(encoded(picture(), "tiff")).pixelColor(30, 30).alpha(), 128);
}

TEST(QtImageConverter, jpegIsConverted)
{
    const QImage image = convertedImage(encoded(picture(), "jpeg"));
    ASSERT_EQ(image.size(), picture().size());
    EXPECT_NEAR(image.pixelColor(30, 10).red(), 120, 8);
    EXPECT_NEAR(image.pixelColor(30, 10).green(), 60, 8);
}

TEST(QtImageConverter, aPhotographStandsUpright)
{
    const QByteArray turned = encoded(picture(), "jpeg", QImageIOHandler::TransformationRotate90);
    EXPECT_EQ(convertedImage(turned).size(), QSize(40, 60));
}

TEST(QtImageConverter, gifIsConverted)
{
    // One red pixel.
    const QByteArray gif = QByteArray::fromHex(
        "47494638396101000100800000ff0000ffffff21f90400000000002c00000000010001000002024401003b");
    EXPECT_EQ(convertedImage(gif).pixelColor(0, 0), QColor(Qt::red));
}

TEST(QtImageConverter, whatIsNoImageIsNone)
{
    EXPECT_EQ(converted(QByteArray()), std::nullopt);
    EXPECT_EQ(converted("no image at all"_ba), std::nullopt);
    EXPECT_EQ(converted(QByteArray(1'000'000, '\0')), std::nullopt);
    EXPECT_EQ(converted("II*\0"_ba + QByteArray(1000, '\xFF')), std::nullopt);
}

TEST(QtImageConverter, formatsThatAreMoreThanPixelsAreNone)
{
    EXPECT_EQ(
        converted("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"/>"_ba),
        std::nullopt);
    EXPECT_EQ(converted(encoded(picture(), "xpm")), std::nullopt);
}

TEST(QtImageConverter, anImageThatDecodesToMoreThanTheBoundIsNone)
{
    EXPECT_EQ(converted(inflated("bmp")), std::nullopt);
    EXPECT_EQ(converted(inflated("jpeg")), std::nullopt);
}

TEST(QtImageConverter, aBrokenImageHarmsNobody)
{
    QtImageConverter converter;
    for (const char* format : {"tiff", "bmp", "jpeg", "webp"}) {
        const QByteArray whole = encoded(picture(), format);
        for (qsizetype size = 0; size < whole.size(); size += std::max<qsizetype>(1, size / 4)) {
            await(converter.pngData(whole.first(size)));
        }
        for (qsizetype index = 0; index < std::min<qsizetype>(whole.size(), 200); ++index) {
            QByteArray damaged = whole;
            damaged[index] = static_cast<char>(~damaged[index]);
            await(converter.pngData(damaged));
        }
        // It converts on.
        EXPECT_TRUE(await(converter.pngData(whole)));
    }
}

TEST(QtImageConverter, theWorkIsDoneElsewhere)
{
    auto executor = std::make_unique<ManualExecutor>();
    ManualExecutor& jobs = *executor;
    QtImageConverter converter(std::move(executor));
    auto png = converter.pngData(encoded(picture(), "bmp"));
    EXPECT_EQ(jobs.pending(), 1U);
    EXPECT_FALSE(png.isReady());
    ASSERT_TRUE(jobs.runOne());
    EXPECT_TRUE(await(std::move(png)));
}

TEST(QtImageConverter, itsEndDropsWhatHasNotBegun)
{
    auto converter = std::make_unique<QtImageConverter>(std::make_unique<ManualExecutor>());
    auto png = converter->pngData(encoded(picture(), "bmp"));
    converter.reset();
    EXPECT_EQ(await(std::move(png)), std::nullopt);
}

} // namespace tessly::test
