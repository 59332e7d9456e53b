#pragma once

#include <QColor>
#include <QImage>
#include <QQuickImageProvider>

namespace tessly {

/// A symbol in one colour, `size` device pixels large; null if there is no such symbol.
[[nodiscard]] QImage symbolImage(const QString& name, const QColor& color, const QSize& size);

/// Symbols for QML: "image://symbol/" with the symbol's name, "/" and a colour as eight hexadecimal
/// digits (alpha first). Ask for a size in device pixels.
class SymbolProvider final : public QQuickImageProvider
{
public:
    SymbolProvider();

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

} // namespace tessly
