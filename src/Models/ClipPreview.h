#pragma once

#include "ClipPayload.h"

#include <QByteArray>
#include <QByteArrayList>

#include <optional>

namespace tessly {

/// As much of a clip's content as its preview shows, and how large the whole is. The first of
/// these that there is: files, an image, text.
struct ClipPreview
{
    /// How many bytes are taken of a text: a few more than are shown, so that it is seen that there
    /// is more, and where the last character that is shown ends.
    static constexpr qint64 textAtMost = qint64{8} * 1024 + 4;
    /// Of HTML, which may begin with pages of style sheets.
    static constexpr qint64 htmlAtMost = qint64{256} * 1024;
    /// Of a list of files, as it is stored: some ten thousand.
    static constexpr qint64 fileListAtMost = qint64{1024} * 1024;

    /// The bytes of the image or the plain text; without either, of all flavours. Of files 0.
    qint64 size = 0;
    /// UTF-8, which may end amid a character: the beginning of the plain text; without one, of the
    /// text in the HTML, if that has any.
    std::optional<QByteArray> text = {};
    bool isTextCut = false;
    /// As a whole.
    std::optional<QByteArray> imagePNG = {};
    QByteArrayList fileURLs = {};
    bool areFilesCut = false;

    bool operator==(const ClipPreview&) const = default;

    /// Of a content that is in memory. Instant, but for HTML without plain text: that takes some
    /// milliseconds.
    [[nodiscard]] static ClipPreview of(const ClipPayload& payload);

    /// Whether `of` is instant.
    [[nodiscard]] static bool isInstant(const ClipPayload& payload);

    /// Makes the text that of an HTML document with that beginning.
    void setHTML(QByteArrayView beginning, bool isCut);
};

} // namespace tessly
