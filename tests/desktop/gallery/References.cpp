#include "References.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A reference has one pixel for this many in a row of its picture.
constexpr int reduction = 4;
/// The picture is compared in squares of this many pixels of the reference.
constexpr int square = 4;
/// How much a square may differ in a colour, of 255, on the average. Another hinting differs by 4,
/// a key cap that is missing by 20.
constexpr int tolerance = 10;

QStringList picturesIn(const QDir& folder, const QString& pattern)
{
    QStringList names;
    for (const QString& file : folder.entryList({pattern}, QDir::Files, QDir::Name)) {
        names.append(file.section(u'.', 0, 0));
    }
    return names;
}

QImage reduced(const QDir& pictures, const QString& name)
{
    const QImage picture(pictures.filePath(name + u".png"_s));
    if (picture.isNull()) {
        throw std::runtime_error("cannot read " + name.toStdString() + ".png");
    }
    // Corners are transparent.
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.fill(Qt::black);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor color = picture.pixelColor(x, y);
            opaque.setPixelColor(
                x, y,
                QColor(
                    color.red() * color.alpha() / 255, color.green() * color.alpha() / 255,
                    color.blue() * color.alpha() / 255));
        }
    }
    return opaque.scaled(
        opaque.size() / reduction, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// The average of each colour in a square, and of how many pixels.
std::array<int, 3> average(const QImage& image, QPoint corner)
{
    std::array<int, 3> sums{};
    int count = 0;
    for (int y = corner.y(); y < std::min(corner.y() + square, image.height()); ++y) {
        for (int x = corner.x(); x < std::min(corner.x() + square, image.width()); ++x) {
            const QRgb pixel = image.pixel(x, y);
            sums[0] += qRed(pixel);
            sums[1] += qGreen(pixel);
            sums[2] += qBlue(pixel);
            ++count;
        }
    }
    for (int& sum : sums) {
        sum /= count;
    }
    return sums;
}

/// The largest difference of two squares in a colour.
int difference(const QImage& one, const QImage& other)
{
    int largest = 0;
    for (int y = 0; y < one.height(); y += square) {
        for (int x = 0; x < one.width(); x += square) {
            const auto a = average(one, {x, y});
            const auto b = average(other, {x, y});
            for (std::size_t color = 0; color < a.size(); ++color) {
                largest = std::max(largest, std::abs(a.at(color) - b.at(color)));
            }
        }
    }
    return largest;
}

} // namespace

void writeReferences(const QDir& pictures, const QString& references)
{
    const QDir folder(references);
    for (const QString& name : picturesIn(folder, u"*.png"_s)) {
        QFile::remove(folder.filePath(name + u".png"_s));
    }
    if (!folder.mkpath(u"."_s)) {
        throw std::runtime_error("cannot make " + references.toStdString());
    }
    for (const QString& name : picturesIn(pictures, u"*.png"_s)) {
        if (!reduced(pictures, name).save(folder.filePath(name + u".png"_s), "PNG")) {
            throw std::runtime_error("cannot write " + name.toStdString() + ".png");
        }
    }
}

bool agreesWithReferences(const QDir& pictures, const QString& references)
{
    const QDir folder(references);
    const QStringList taken = picturesIn(pictures, u"*.png"_s);
    const QStringList expected = picturesIn(folder, u"*.png"_s);
    bool agrees = taken == expected && !taken.isEmpty();
    if (!agrees) {
        std::fprintf(
            stderr, "there are %d pictures and %d references\n", int(taken.size()),
            int(expected.size()));
    }
    for (const QString& name : taken) {
        if (!expected.contains(name)) {
            std::fprintf(stderr, "%s: no reference\n", qPrintable(name));
            continue;
        }
        const QImage reference(folder.filePath(name + u".png"_s));
        const QImage picture = reduced(pictures, name);
        if (picture.size() != reference.size()) {
            std::fprintf(stderr, "%s: another size\n", qPrintable(name));
            agrees = false;
        } else if (const int most = difference(picture, reference); most > tolerance) {
            std::fprintf(stderr, "%s: differs by %d\n", qPrintable(name), most);
            agrees = false;
        }
    }
    return agrees;
}

} // namespace tessly::test
