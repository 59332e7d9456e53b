#include "SymbolProvider.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace tessly {
namespace {

const QString folder = u":/qt/qml/Tessly/Design/symbols/"_s;

const QStringList names = {
    u"doc.on.clipboard.fill"_s,
    u"doc.on.clipboard"_s,
    u"record.circle"_s,
    u"pause.circle"_s,
    u"gearshape"_s,
    u"square.stack.3d.up"_s,
    u"text.alignleft"_s,
    u"textformat"_s,
    u"photo"_s,
    u"doc.on.doc"_s,
    u"link"_s,
    u"magnifyingglass"_s,
    u"pin.fill"_s,
    u"info.circle.fill"_s,
    u"exclamationmark.triangle.fill"_s,
    u"xmark.octagon.fill"_s,
    u"xmark"_s,
    u"hand.raised"_s,
    u"keyboard"_s,
    u"info.circle"_s,
    u"clipboard"_s,
    u"lock.shield"_s,
    u"plus"_s,
    u"minus"_s,
};

/// How many pixels are more than half opaque.
int drawnPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            count += qAlpha(image.pixel(x, y)) > 127 ? 1 : 0;
        }
    }
    return count;
}

TEST(SymbolProviderTest, EverySymbolIsThere)
{
    for (const QString& name : names) {
        const QImage image = symbolImage(name, Qt::black, QSize(48, 48));
        EXPECT_EQ(image.size(), QSize(48, 48)) << name.toStdString();
        EXPECT_GT(drawnPixels(image), 100) << name.toStdString();
        EXPECT_LT(drawnPixels(image), 48 * 48 * 3 / 4) << name.toStdString();
    }
}

TEST(SymbolProviderTest, AllAreDrawnOnOneGridWithOneStroke)
{
    QDirIterator files(folder, {u"*.svg"_s});
    int count = 0;
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QXmlStreamReader reader(&file);
        ASSERT_TRUE(reader.readNextStartElement());
        const auto attributes = reader.attributes();
        EXPECT_EQ(attributes.value(u"viewBox"_s), u"0 0 24 24"_s) << qPrintable(file.fileName());
        EXPECT_EQ(attributes.value(u"stroke-width"_s), u"1.75"_s) << qPrintable(file.fileName());
        EXPECT_EQ(attributes.value(u"stroke-linecap"_s), u"round"_s) << qPrintable(file.fileName());
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement) {
                EXPECT_FALSE(reader.attributes().hasAttribute(u"stroke-width"_s))
                    << qPrintable(file.fileName());
            }
        }
        EXPECT_FALSE(reader.hasError()) << qPrintable(file.fileName());
        ++count;
    }
    EXPECT_EQ(count, names.size());
}

/// Whether something is drawn beyond the 24-unit grid, which a drawing of the grid alone cuts off.
bool leavesItsGrid(QByteArray drawing)
{
    EXPECT_EQ(drawing.count("viewBox=\"0 0 24 24\""), 1);
    const QImage image = [&drawing] {
        drawing.replace("viewBox=\"0 0 24 24\"", "viewBox=\"-12 -12 48 48\"");
        QSvgRenderer renderer(drawing);
        QImage image(96, 96, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        renderer.render(&painter);
        return image;
    }();
    return drawnPixels(image) != drawnPixels(image.copy(24, 24, 48, 48));
}

TEST(SymbolProviderTest, StaysInsideItsGrid)
{
    for (const QString& name : names) {
        QFile file(folder + name + u".svg"_s);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_FALSE(leavesItsGrid(file.readAll())) << name.toStdString();
    }
    EXPECT_TRUE(leavesItsGrid("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 24 24\">"
                              "<circle cx=\"22\" cy=\"12\" r=\"6\"/></svg>"));
}

TEST(SymbolProviderTest, IsTinted)
{
    const QImage image = symbolImage(u"photo"_s, QColor(255, 0, 0, 255), QSize(48, 48));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() == 255) {
                ASSERT_EQ(color, QColor(255, 0, 0));
            }
        }
    }
}

TEST(SymbolProviderTest, ThereIsNoOtherSymbol)
{
    EXPECT_TRUE(symbolImage(u"no.such.symbol"_s, Qt::black, QSize(24, 24)).isNull());
}

TEST(SymbolProviderTest, ServesNameAndColourFromOneAddress)
{
    SymbolProvider provider;
    QSize size;
    const QImage image =
        provider.requestImage(u"doc.on.clipboard.fill/8000ff00"_s, &size, QSize(32, 32));
    EXPECT_EQ(size, QSize(32, 32));
    EXPECT_EQ(image, symbolImage(u"doc.on.clipboard.fill"_s, QColor(0, 255, 0, 128), size));
    EXPECT_EQ(provider.requestImage(u"link/ff000000"_s, &size, {}).size(), QSize(24, 24));
    EXPECT_TRUE(provider.requestImage(u"nothing"_s, nullptr, {}).isNull());
}

} // namespace
} // namespace tessly
