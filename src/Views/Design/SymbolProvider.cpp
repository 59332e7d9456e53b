#include "SymbolProvider.h"

#include <QFile>
#include <QLoggingCategory>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(log, "com.brackmoor.tessly.SymbolProvider")

// The grid on which the symbols are drawn.
constexpr QSize naturalSize(24, 24);

} // namespace

QImage symbolImage(const QString& name, const QColor& color, const QSize& size)
{
    const QString path = u":/qt/qml/Tessly/Design/symbols/"_s + name + u".svg"_s;
    if (!QFile::exists(path)) {
        return {};
    }
    QSvgRenderer renderer(path);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    // The drawing tells the shape only.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

SymbolProvider::SymbolProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{
}

QImage SymbolProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const auto slash = id.lastIndexOf(u'/');
    const QColor color(u'#' + id.sliced(slash + 1));
    const QImage image = symbolImage(
        id.first(qMax(slash, 0)), color, requestedSize.isEmpty() ? naturalSize : requestedSize);
    if (image.isNull() || !color.isValid()) {
        qCWarning(log) << "There is no symbol" << id;
    }
    if (size != nullptr) {
        *size = image.size();
    }
    return image;
}

} // namespace tessly
