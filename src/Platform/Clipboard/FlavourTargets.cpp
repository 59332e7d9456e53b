#include "FlavourTargets.h"

#include "FileURL.h"

#include <array>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

// UTF8_STRING comes first because GTK rewrites line ends to CRLF in the MIME form.
constexpr auto plainTextTargets = std::to_array<QByteArrayView>(
    {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"});
constexpr auto rtfTargets =
    std::to_array<QByteArrayView>({"text/rtf", "application/rtf", "text/richtext"});
constexpr auto htmlTargets = std::to_array<QByteArrayView>({"text/html"});
constexpr auto pngTargets = std::to_array<QByteArrayView>({"image/png"});
constexpr auto otherImageTargets = std::to_array<QByteArrayView>(
    {"image/tiff", "image/bmp", "image/jpeg", "image/webp", "image/gif"});
constexpr auto fileTargets = std::to_array<QByteArrayView>(
    {"text/uri-list", "x-special/gnome-copied-files", "x-special/mate-copied-files"});

constexpr QByteArrayView fileScheme = "file:";

bool isAbsoluteFileURL(const QByteArray& line)
{
    return line.size() > fileScheme.size() + 1 && line[fileScheme.size()] == '/' &&
           line.first(fileScheme.size()).compare(fileScheme, Qt::CaseInsensitive) == 0;
}

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// Whether RFC 3986 has this character in a path as it stands.
bool isPathCharacter(char c)
{
    const bool isLetterOrDigit =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    return isLetterOrDigit || QByteArrayView("/-._~!$&'()*+,;=:@").contains(c);
}

/// A `file:` URL as RFC 3986 has it. Programs leave in the path what they find legible: Qt "[" and
/// "]", others blanks and letters beyond ASCII.
QByteArray mendedFileURL(const QByteArray& url)
{
    qsizetype pathStart = fileScheme.size();
    if (url.indexOf("//", pathStart) == pathStart) {
        pathStart = url.indexOf('/', pathStart + 2);
    }
    if (pathStart < 0) {
        return url;
    }
    QByteArray mended = url.first(pathStart);
    mended.reserve(url.size());
    bool isFragment = false;
    for (qsizetype index = pathStart; index < url.size(); ++index) {
        const char c = url[index];
        const bool isEscape = c == '%' && index + 2 < url.size() && isHexDigit(url[index + 1]) &&
                              isHexDigit(url[index + 2]);
        // A query or a fragment may follow. Nobody can tell it from a name with these characters,
        // which whoever writes a URL escapes.
        const bool isDelimiter = c == '?' || (c == '#' && !isFragment);
        isFragment = isFragment || c == '#';
        if (isPathCharacter(c) || isEscape || isDelimiter) {
            mended += c;
        } else {
            mended += '%' + QByteArray(1, c).toHex().toUpper();
        }
    }
    return mended;
}

} // namespace

std::span<const QByteArrayView> targetsOf(Flavour flavour)
{
    switch (flavour) {
    case Flavour::plainText:
        return plainTextTargets;
    case Flavour::rtf:
        return rtfTargets;
    case Flavour::html:
        return htmlTargets;
    case Flavour::png:
        return pngTargets;
    case Flavour::otherImage:
        return otherImageTargets;
    }
    Q_UNREACHABLE();
}

std::span<const QByteArrayView> fileListTargets()
{
    return fileTargets;
}

QByteArrayView passwordHintTarget()
{
    return "x-kde-passwordManagerHint";
}

bool isSameTarget(QByteArrayView offered, QByteArrayView wanted)
{
    const auto sensitivity = wanted.contains(';') ? Qt::CaseInsensitive : Qt::CaseSensitive;
    return offered.compare(wanted, sensitivity) == 0;
}

bool isLatin1Target(QByteArrayView target)
{
    return target == QByteArrayView("STRING");
}

QSet<QString> typeNames(const QByteArrayList& offered)
{
    QSet<QString> names;
    for (const QByteArray& name : offered) {
        names.insert(QString::fromUtf8(name));
        if (name == passwordHintTarget()) {
            names.insert(Pasteboard::concealedType);
        }
    }
    return names;
}

QByteArrayList fileURLs(QByteArrayView target, const QByteArray& list)
{
    QByteArrayList urls;
    bool isOperation = target != fileTargets.front();
    qsizetype start = 0;
    while (start < list.size()) {
        const qsizetype lineFeed = list.indexOf('\n', start);
        const qsizetype end = lineFeed < 0 ? list.size() : lineFeed;
        // Lists end their lines with CRLF or LF; some end with a NUL.
        QByteArray line = list.sliced(start, end - start).trimmed();
        while (line.endsWith('\0')) {
            line.chop(1);
        }
        line = line.trimmed();
        start = end + 1;
        if (isOperation) {
            isOperation = false;
            continue;
        }
        // What is no file, comments among it, is skipped. No file has a NUL in its name.
        if (!isAbsoluteFileURL(line) || line.contains('\0')) {
            continue;
        }
        // A host that is none cannot be mended, and what stands behind it names nothing.
        if (const QByteArray url = mendedFileURL(line); FileURL::parse(url)) {
            urls.append(url);
        }
    }
    return urls;
}

ReadResult<QByteArrayList> limitedFileURLs(QByteArrayList urls, qint64 byteLimit)
{
    if (urls.isEmpty()) {
        return {.status = ReadStatus::absent};
    }
    qint64 size = 0;
    for (const QByteArray& url : urls) {
        size += url.size();
    }
    if (size > byteLimit) {
        return {.status = ReadStatus::tooLarge};
    }
    return {.status = ReadStatus::read, .value = std::move(urls)};
}

bool isPNG(QByteArrayView bytes)
{
    return bytes.startsWith("\x89PNG\r\n\x1a\n"_ba);
}

} // namespace tessly
