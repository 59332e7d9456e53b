#pragma once

#include <QByteArrayView>

#include <optional>

namespace tessly {

/// The parts of a URL that the program looks at, as views into the text that was parsed.
struct URLSyntax
{
    /// Empty for a relative reference.
    QByteArrayView scheme;
    /// As written, percent-encoded.
    QByteArrayView path;

    /// Parses by RFC 3986, strictly: no blanks, no characters outside ASCII, no stray "%". None if
    /// `text` is no URL, or empty. A text that cannot be one is refused before it is read through.
    [[nodiscard]] static std::optional<URLSyntax> parse(QByteArrayView text);
};

/// Whether `text` is a URL with a scheme, such as "mailto:someone". Text that begins with no scheme
/// is refused at its first wrong character.
[[nodiscard]] bool isAbsoluteURL(QByteArrayView text);

} // namespace tessly
