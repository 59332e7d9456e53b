#pragma once

#include "ClipPayload.h"
#include "Pasteboard.h"

#include <vector>

namespace tessly {

/// The items that put a payload back as it was; none if there is nothing that can be written. Files
/// go alone, one item each.
[[nodiscard]] std::vector<PasteboardItem> pasteboardItems(const ClipPayload& payload);

/// The item that puts it back as plain text (for files: their paths, one a line); none if it has no
/// text.
[[nodiscard]] std::vector<PasteboardItem> plainTextItems(const ClipPayload& payload);

} // namespace tessly
