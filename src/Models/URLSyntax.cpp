#include "URLSyntax.h"

#include <QByteArray>

#include <uriparser/Uri.h>

#include <algorithm>

namespace tessly {

namespace {

constexpr bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool isSchemeCharacter(char c)
{
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

/// What stands before the first ":" if that can be a scheme, else nothing.
QByteArrayView leadingScheme(QByteArrayView text)
{
    if (text.isEmpty() || !isLetter(text.front())) {
        return {};
    }
    const auto* const end = std::ranges::find_if_not(text, isSchemeCharacter);
    return end != text.end() && *end == ':' ? text.first(end - text.begin()) : QByteArrayView();
}

bool isValid(QByteArrayView text)
{
    UriUriA uri;
    const char* errorPosition = nullptr;
    const int result =
        uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(), &errorPosition);
    if (result != URI_SUCCESS) {
        return false;
    }
    uriFreeUriMembersA(&uri);
    return true;
}

} // namespace

std::optional<URLSyntax> URLSyntax::parse(QByteArrayView text)
{
    if (text.isEmpty()) {
        return std::nullopt;
    }
    const QByteArrayView scheme = leadingScheme(text);
    qsizetype pathStart = scheme.isEmpty() ? 0 : scheme.size() + 1;
    if (text.sliced(pathStart).startsWith("//")) {
        const auto* const end = std::find_if(text.begin() + pathStart + 2, text.end(), [](char c) {
            return c == '/' || c == '?' || c == '#';
        });
        pathStart = end - text.begin();
    }
    const auto* const pathEnd = std::find_if(
        text.begin() + pathStart, text.end(), [](char c) { return c == '?' || c == '#'; });

    if (scheme.isEmpty()) {
        if (!isValid(text)) {
            return std::nullopt;
        }
    } else {
        // The parser makes a list of the path's segments, and a hostile text can have millions.
        // Behind the path's first character a slash is a character like any other, so that a text
        // without these slashes is valid exactly when this one is.
        QByteArray withoutSegments = text.toByteArray();
        const qsizetype kept = std::min(pathStart + 1, text.size());
        std::replace(withoutSegments.begin() + kept, withoutSegments.end(), '/', '-');
        if (!isValid(withoutSegments)) {
            return std::nullopt;
        }
    }
    return URLSyntax{scheme, text.sliced(pathStart, pathEnd - text.begin() - pathStart)};
}

bool isAbsoluteURL(QByteArrayView text)
{
    return !leadingScheme(text).isEmpty() && URLSyntax::parse(text).has_value();
}

} // namespace tessly
