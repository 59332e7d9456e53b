#include "FileURL.h"

#include "URLSyntax.h"

namespace tessly {

namespace {

QByteArray percentDecoded(QByteArrayView encoded)
{
    QByteArray decoded;
    decoded.reserve(encoded.size());
    for (qsizetype i = 0; i < encoded.size(); ++i) {
        // Valid syntax has two hexadecimal digits behind every percent sign.
        if (encoded[i] == '%' && !encoded.sliced(i).startsWith("%00")) {
            decoded += QByteArray::fromHex(encoded.sliced(i + 1, 2).toByteArray());
            i += 2;
        } else {
            decoded += encoded[i];
        }
    }
    return decoded;
}

} // namespace

std::optional<FileURL> FileURL::parse(QByteArrayView url)
{
    const auto syntax = URLSyntax::parse(url);
    if (!syntax) {
        return std::nullopt;
    }
    QByteArrayView path = syntax->path;
    while (path.size() > 1 && path.back() == '/') {
        path.chop(1);
    }
    const QByteArrayView last = path == "/" ? path : path.sliced(path.lastIndexOf('/') + 1);
    return FileURL{percentDecoded(path), percentDecoded(last)};
}

} // namespace tessly
