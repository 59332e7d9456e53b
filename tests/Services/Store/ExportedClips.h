#pragma once

#include "Clip.h"
#include "ExportFormat.h"

#include <QByteArray>

#include <vector>

namespace tessly::test {

inline const QByteArray smallPNG = QByteArrayLiteral("\x89PNG\r\n\x1a\n and some pixels");

/// A clip that holds this content and differs from others of another number in all else.
inline Clip clipOf(ClipPayload::Fields fields, int number = 1)
{
    return {
        .id = QUuid(
            0x6F0C1E59, 0x2B5B, 0x4C43, 0x9B, 0x0C, 0x5C, 0x0B, 0x8F, 0x1E, 0x2D,
            static_cast<uchar>(number)),
        .createdAt = 1'600'000'000.123456 + number,
        .lastUsedAt = 1'650'000'000.654321 + number,
        .payload = ClipPayload(std::move(fields)),
        .sourceAppName = QStringLiteral("Editor \"é\" /😀"),
        .sourceBundleID = QStringLiteral("org.example.Editor"),
        .isPinned = false,
        .pinOrder = std::nullopt,
        .copyCount = number,
    };
}

inline Clip textClip(const QByteArray& text, int number = 1)
{
    return clipOf({.plainText = text}, number);
}

inline Clip pinned(Clip clip, std::optional<double> order)
{
    clip.isPinned = true;
    clip.pinOrder = order;
    return clip;
}

/// One of each kind, and of what is hard to write.
inline std::vector<Clip> clipsOfEveryKind()
{
    return {
        textClip("plain é 😀\r\n\ttext \"quoted\" \\ / \x01\x7f", 1),
        textClip(QByteArray("with\0nul", 8), 2),
        textClip("   \n ", 3),
        textClip("https://example.org/?a=b", 4),
        clipOf({.plainText = "rich", .rtf = "{\\rtf1 \xe9}", .html = "\xff\xfe<\0b\0>\0"}, 5),
        clipOf({.plainText = "", .rtf = "", .html = ""}, 6),
        clipOf({.imagePNG = smallPNG}, 7),
        clipOf({.plainText = "alt", .html = "<img>", .imagePNG = smallPNG + "more"}, 8),
        clipOf(
            {.plainText = "/tmp/a\n/tmp/b c",
             .fileURLs = {"file:///tmp/a", "file:///tmp/b%20c", "file:///tmp/é"}},
            9),
        pinned(textClip("pinned", 10), 2.5),
        pinned(textClip("pinned without an order", 11), std::nullopt),
        [] {
            Clip clip = textClip("from nowhere", 12);
            clip.sourceAppName.reset();
            clip.sourceBundleID.reset();
            return clip;
        }(),
        clipOf({.imagePNG = smallPNG + QByteArray(1'000'000, '\x80')}, 13),
    };
}

inline QByteArray lineOf(const Clip& clip)
{
    QByteArray line;
    ExportFormat::write(clip, [&line](QByteArrayView bytes) { line.append(bytes); });
    return line;
}

} // namespace tessly::test
