#pragma once

#include <string>

namespace tessly {

/// The manual page tessly(1), in the man macros of roff.
[[nodiscard]] std::string manualPage(const std::string& version);

} // namespace tessly
