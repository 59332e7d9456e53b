#pragma once

#include "ClipPayload.h"

#include <variant>

namespace tessly {

/// The content of a clip in a list: what a row shows of it and what it is known by are always
/// there; the content itself only where it is small. A value that is cheap to copy. Any thread may
/// use it, also the same one at the same time.
class ListedPayload
{
public:
    /// What is known of content that is not held.
    struct Outline
    {
        ClipKind kind = ClipKind::text;
        QString previewLine;
        QByteArray contentHash;
    };

    /// Held.
    // NOLINTNEXTLINE(google-explicit-constructor): a whole content is a listed one.
    ListedPayload(const ClipPayload& payload = ClipPayload());
    explicit ListedPayload(Outline outline);

    /// The content; null where it has to be fetched from the store.
    [[nodiscard]] const ClipPayload* held() const;

    // As of ClipPayload.
    [[nodiscard]] ClipKind kind() const;
    [[nodiscard]] QString previewLine() const;
    [[nodiscard]] QByteArray contentHash() const;

    /// Whether they are of the same content: by its hash where one of them does not hold it.
    bool operator==(const ListedPayload& other) const;

private:
    std::variant<ClipPayload, Outline> m_content;
};

} // namespace tessly
