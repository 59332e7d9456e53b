#include "References.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <vector>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

/// A reference has one pixel for this many in a row of its picture.
constexpr int reduction = 4;
/// What is scrolled may stand this many pixels of the picture higher or lower.
constexpr int shiftAtMost = 2;
/// The picture is compared in squares of this many pixels of the reference.
constexpr int square = 4;
/// How much a square may differ in a colour, of 255, on the average. A hairline that is missing
/// between two greys differs by 13, a key cap by 74.
constexpr int tolerance = 24;

QStringList picturesIn(const QDir& folder, const QString& pattern)
{
    QStringList names;
    for (const QString& file : folder.entryList({pattern}, QDir::Files, QDir::Name)) {
        names.append(file.section(u'.', 0, 0));
    }
    return names;
}

QImage opaque(const QDir& pictures, const QString& name)
{
    const QImage picture(pictures.filePath(name + u".png"_s));
    if (picture.isNull()) {
        throw std::runtime_error("cannot read " + name.toStdString() + ".png");
    }
    // Corners are transparent.
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.fill(Qt::black);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

/// `shift`: so many pixels are cut off above, or added if less than zero.
QImage reduced(const QImage& picture, int shift)
{
    const QImage shifted = picture.copy(0, shift, picture.width(), picture.height());
    return shifted.scaled(
        shifted.size() / reduction, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
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

/// How much a square of one differs from that of the other, in the colour that differs most.
int difference(const QImage& one, const QImage& other, QPoint corner)
{
    const auto a = average(one, corner);
    const auto b = average(other, corner);
    int largest = 0;
    for (std::size_t color = 0; color < a.size(); ++color) {
        largest = std::max(largest, std::abs(a.at(color) - b.at(color)));
    }
    return largest;
}

/// The largest difference of a square in all the pictures, each with the best of its shifts.
int difference(const std::vector<QImage>& shifted, const QImage& reference)
{
    int largest = 0;
    for (int y = 0; y < reference.height(); y += square) {
        for (int x = 0; x < reference.width(); x += square) {
            int least = 255;
            for (const QImage& picture : shifted) {
                least = std::min(least, difference(picture, reference, {x, y}));
            }
            largest = std::max(largest, least);
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
        if (!reduced(opaque(pictures, name), 0).save(folder.filePath(name + u".png"_s), "PNG")) {
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
        const QImage picture = opaque(pictures, name);
        std::vector<QImage> shifted;
        for (int shift = -shiftAtMost; shift <= shiftAtMost; ++shift) {
            shifted.push_back(reduced(picture, shift));
        }
        if (shifted.front().size() != reference.size()) {
            std::fprintf(stderr, "%s: another size\n", qPrintable(name));
            agrees = false;
        } else if (const int most = difference(shifted, reference); most > tolerance) {
            std::fprintf(stderr, "%s: differs by %d\n", qPrintable(name), most);
            agrees = false;
        }
    }
    return agrees;
}

} // namespace tessly::test
