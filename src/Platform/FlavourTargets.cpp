#include "FlavourTargets.h"

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

bool isAbsoluteFileURL(const QByteArray& line)
{
    constexpr QByteArrayView scheme = "file:/";
    return line.size() > scheme.size() &&
           line.first(scheme.size()).compare(scheme, Qt::CaseInsensitive) == 0;
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
        start = end + 1;
        if (isOperation) {
            isOperation = false;
            continue;
        }
        // What is no file, comments among it, is skipped.
        if (isAbsoluteFileURL(line)) {
            urls.append(line.trimmed());
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
