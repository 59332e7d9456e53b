#pragma once

#include <QString>

#include <array>
#include <optional>

namespace tessly {

/// The coarse kind of a clip, by which the user filters.
enum class ClipKind { text, richText, image, files, link };

/// Every kind, in the order of the filter chips.
inline constexpr std::array allClipKinds = {
    ClipKind::text, ClipKind::richText, ClipKind::image, ClipKind::files, ClipKind::link,
};

/// The name under which a kind is stored: "text", "richText", "image", "files" or "link".
[[nodiscard]] QString rawValue(ClipKind kind);

/// The kind of a stored name, or none for an unknown one.
[[nodiscard]] std::optional<ClipKind> clipKind(QStringView rawValue);

} // namespace tessly
