#include "QtImageConverter.h"
#include "ManualExecutor.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QLibraryInfo>
#include <QVersionNumber>

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

ScaledImage scaled(const QByteArray& png, const QSize& bound)
{
    QtImageConverter converter;
    return await(converter.scaled(png, bound));
}

QImage imageOf(const ScaledImage& seen)
{
    EXPECT_EQ(seen.pixels.size(), qsizetype{4} * seen.size.width() * seen.size.height());
    return QImage(
               reinterpret_cast<const uchar*>(seen.pixels.constData()), seen.size.width(),
               seen.size.height(), QImage::Format_RGB32)
        .copy();
}

/// The checksum that belongs to the header of a PNG, in hexadecimal digits.
QByteArray headerChecksum(const QByteArray& png)
{
    quint32 checksum = 0xFFFFFFFF;
    for (const char byte : png.sliced(12, 17)) {
        checksum ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            checksum = (checksum >> 1) ^ (checksum % 2 == 0 ? 0 : 0xEDB88320);
        }
    }
    return QByteArray::number(~checksum, 16).rightJustified(8, '0');
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

/// A number of so many bytes, the least significant first.
QByteArray littleEndian(qint64 number, int bytes)
{
    QByteArray result;
    for (int index = 0; index < bytes; ++index) {
        result += static_cast<char>(number >> (8 * index));
    }
    return result;
}

/// One frame of two colours at the top left of a screen, of whose pixels only the first is there.
QByteArray gif(QSize screen, QSize frame)
{
    return "GIF89a" + littleEndian(screen.width(), 2) + littleEndian(screen.height(), 2) +
           QByteArray::fromHex("800000ff0000ffffff2c00000000") + littleEndian(frame.width(), 2) +
           littleEndian(frame.height(), 2) + QByteArray::fromHex("0002024401003b");
}

/// An animation of one small frame on a canvas.
QByteArray webp(QSize canvas)
{
    const auto chunk = [](const QByteArray& name, const QByteArray& data) {
        return name + littleEndian(static_cast<int>(data.size()), 4) + data +
               QByteArray(data.size() % 2, '\0');
    };
    // A file of one image is a RIFF with that image's chunk.
    const QByteArray still = encoded(picture(), "webp").sliced(12);
    const QByteArray frame =
        littleEndian(0, 3) + littleEndian(0, 3) + littleEndian(picture().width() - 1, 3) +
        littleEndian(picture().height() - 1, 3) + littleEndian(100, 3) + littleEndian(0, 1) + still;
    const QByteArray chunks =
        "WEBP" +
        chunk(
            "VP8X", littleEndian(0x12, 4) + littleEndian(canvas.width() - 1, 3) +
                        littleEndian(canvas.height() - 1, 3)) +
        chunk("ANIM", littleEndian(0, 6)) + chunk("ANMF", frame);
    return "RIFF" + littleEndian(static_cast<int>(chunks.size()), 4) + chunks;
}

qint64 statusBytes(QByteArrayView field)
{
    QFile file(u"/proc/self/status"_s);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(field)) {
            return line.sliced(field.size()).trimmed().split(' ').front().toLongLong() * 1024;
        }
    }
    ADD_FAILURE() << "no " << field.data();
    return 0;
}

/// By how much the memory of the process was larger at the most, in bytes.
template <typename Operation>
qint64 peakGrowth(Operation operation)
{
    QFile peak(u"/proc/self/clear_refs"_s);
    EXPECT_TRUE(peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    EXPECT_EQ(peak.write("5"), 1);
    const qint64 before = statusBytes("VmRSS:");
    operation();
    return statusBytes("VmHWM:") - before;
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

TEST(QtImageConverter, aFewBytesDoNotTakeTheMemoryOfAHugeImage)
{
    const QSize huge(11'000, 11'000);
    const QSize tiny(1, 1);
    const std::vector<std::pair<const char*, QByteArray>> claims = {
        {"gif of a huge frame", gif(huge, huge)},
        {"gif of a huge frame on a small screen", gif(tiny, huge)},
        {"gif of a huge frame on no screen", gif(QSize(0, 0), huge)},
        {"gif of a small frame on a huge screen", gif(huge, tiny)},
        {"animated webp", webp(huge)},
        {"bmp", inflated("bmp")},
        {"jpeg", inflated("jpeg")},
    };
    for (const auto& [name, bytes] : claims) {
        ASSERT_LT(bytes.size(), 10'000) << name;
        const qint64 growth = peakGrowth([&bytes = bytes] { (void)converted(bytes); });
        EXPECT_LT(growth, qint64{32} << 20) << name;
    }
    EXPECT_TRUE(converted(gif(QSize(60, 40), QSize(60, 40)))) << "one that is not huge";
    EXPECT_TRUE(converted(webp(QSize(60, 40)))) << "one that is not huge";
}

TEST(QtImageConverter, anImageAsLargeAsAnyScreenIsConverted)
{
    QImage image(7680, 4320, QImage::Format_Mono);
    image.fill(1);
    const auto png = converted(encoded(image, "bmp"));
    ASSERT_TRUE(png);
    QBuffer buffer;
    buffer.setData(*png);
    buffer.open(QIODevice::ReadOnly);
    EXPECT_EQ(QImageReader(&buffer, "png").size(), image.size());
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

TEST(QtImageConverter, anImageThatFitsIsSeenPixelForPixel)
{
    const QImage opaque =
        picture().convertToFormat(QImage::Format_RGB32).convertToFormat(QImage::Format_ARGB32);
    const ScaledImage seen = scaled(encoded(opaque, "png"), {60, 40});
    EXPECT_EQ(seen.fullSize, QSize(60, 40));
    EXPECT_EQ(imageOf(seen).convertToFormat(QImage::Format_ARGB32), opaque);
}

TEST(QtImageConverter, aLargeImageIsReducedToFitInItsProportions)
{
    const QByteArray png = encoded(picture().convertToFormat(QImage::Format_RGB32), "png");
    EXPECT_EQ(scaled(png, {30, 30}).size, QSize(30, 20));
    EXPECT_EQ(scaled(png, {30, 30}).fullSize, QSize(60, 40));
    EXPECT_EQ(scaled(png, {60, 10}).size, QSize(15, 10));
    EXPECT_NEAR(imageOf(scaled(png, {30, 30})).pixelColor(15, 10).red(), 120, 8);
    QImage line(2000, 1, QImage::Format_RGB32);
    line.fill(Qt::red);
    EXPECT_EQ(scaled(encoded(line, "png"), {100, 100}).size, QSize(100, 1));
}

TEST(QtImageConverter, behindWhatIsTransparentAPatternIsSeen)
{
    QImage image(20, 20, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    image.setPixelColor(0, 0, Qt::black);
    const QImage seen = imageOf(scaled(encoded(image, "png"), {20, 20}));
    EXPECT_EQ(seen.pixelColor(0, 0), QColor(Qt::black));
    EXPECT_NE(seen.pixelColor(1, 1), seen.pixelColor(9, 1));
    EXPECT_NE(seen.pixelColor(1, 1), QColor(Qt::black));
}

TEST(QtImageConverter, whatIsNoPNGIsNotSeen)
{
    for (const QByteArray& bytes :
         {QByteArray(), "no image at all"_ba, encoded(picture(), "bmp"),
          gif(QSize(11'000, 11'000), QSize(11'000, 11'000)), "\x89PNG\r\n\x1a\n"_ba}) {
        const ScaledImage seen = scaled(bytes, {100, 100});
        EXPECT_FALSE(seen.fullSize.isValid());
        EXPECT_TRUE(seen.pixels.isEmpty());
    }
}

TEST(QtImageConverter, aPNGBeyondTheBoundTellsItsSizeAlone)
{
    QByteArray png = encoded(picture(), "png");
    // The header's width and height, and what is to be its checksum then.
    png.replace(16, 8, "\0\0\xEA\x60\0\0\xEA\x60"_ba);
    png.replace(29, 4, QByteArray::fromHex(headerChecksum(png)));
    const ScaledImage seen = scaled(png, {100, 100});
    EXPECT_EQ(seen.fullSize, QSize(60'000, 60'000));
    EXPECT_TRUE(seen.pixels.isEmpty());
}

TEST(QtImageConverter, aPNGThatIsCutOffHarmsNobody)
{
    const QByteArray png = encoded(picture(), "png");
    for (qsizetype size = 0; size < png.size(); ++size) {
        scaled(png.first(size), {30, 20});
    }
    EXPECT_EQ(scaled(png, {30, 20}).size, QSize(30, 20));
}

TEST(QtImageConverter, aLargeImageIsWholeInMemoryOnceAtMostToBeSeen)
{
    QImage image(8000, 8000, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    const QByteArray png = encoded(image, "png");
    image = {};
    ScaledImage seen;
    const qint64 growth = peakGrowth([&] { seen = scaled(png, {400, 400}); });
    EXPECT_EQ(seen.size, QSize(400, 400));
    // Later versions of the toolkit read the whole of a PNG before they scale it.
    const qint64 whole = QLibraryInfo::version() < QVersionNumber(6, 5) ? 0 : qint64{256} << 20;
    EXPECT_LT(growth, whole + (qint64{32} << 20));
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
