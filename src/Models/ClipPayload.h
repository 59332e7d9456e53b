#pragma once

#include "ClipKind.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <memory>
#include <optional>

namespace tessly {

/// The content of one clipboard capture. An immutable value: copying it shares the content, and
/// what is derived from the content is made at most once, on whichever thread asks first.
///
/// All text is UTF-8. Any thread may use a payload, also the same one at the same time.
class ClipPayload
{
public:
    struct Fields
    {
        /// The plain-text flavour, valid UTF-8 (the pasteboard mends what is not).
        std::optional<QByteArray> plainText = {};
        /// The RTF flavour, bytes as read.
        std::optional<QByteArray> rtf = {};
        /// The HTML flavour, bytes as read.
        std::optional<QByteArray> html = {};
        /// The image, always PNG.
        std::optional<QByteArray> imagePNG = {};
        /// The URLs of a file copy, absolute, in the order of the pasteboard.
        QByteArrayList fileURLs = {};

        bool operator==(const Fields&) const = default;
    };

    /// Nothing at all.
    ClipPayload();
    explicit ClipPayload(Fields fields);
    // Copies only: what is moved from stays a payload that can be used.
    ClipPayload(const ClipPayload&) noexcept = default;
    ClipPayload& operator=(const ClipPayload&) noexcept = default;
    ~ClipPayload() = default;

    [[nodiscard]] const std::optional<QByteArray>& plainText() const;
    [[nodiscard]] const std::optional<QByteArray>& rtf() const;
    [[nodiscard]] const std::optional<QByteArray>& html() const;
    [[nodiscard]] const std::optional<QByteArray>& imagePNG() const;
    [[nodiscard]] const QByteArrayList& fileURLs() const;

    /// Field by field; an absent buffer differs from an empty one.
    bool operator==(const ClipPayload& other) const;

    /// Whether there is no content: no text or an empty one, no buffer (not even an empty one), no
    /// file.
    [[nodiscard]] bool isEmpty() const;

    /// Bytes of all flavours together.
    [[nodiscard]] qint64 byteCount() const;

    /// Memoised: costs nothing after the first call.
    [[nodiscard]] ClipKind kind() const;

    /// One line that stands for the content; as long as the content. Made anew on each call.
    [[nodiscard]] QByteArray preview() const;

    /// The beginning of `preview`, as much of it as a row can show (a few hundred characters, cut
    /// between grapheme clusters). Memoised.
    [[nodiscard]] QString previewLine() const;

    /// What full-text search indexes: plain text, file names and paths, words for images. Made anew
    /// on each call.
    [[nodiscard]] QByteArray searchText() const;

    /// Identifies equal content: 64 lower-case hexadecimal digits. Memoised.
    [[nodiscard]] QByteArray contentHash() const;

    /// `fileURLs` as a compact JSON array that escapes "/" as "\/": stored, and part of the hash,
    /// so its bytes must never change for a given list.
    [[nodiscard]] QByteArray fileURLsJSON() const;

private:
    struct Content;
    std::shared_ptr<const Content> m_content;
};

} // namespace tessly
