#pragma once

#include <string>

namespace tessly {

/// Completion scripts. Each is self-contained: the one for bash needs no library.
[[nodiscard]] std::string bashCompletion();
[[nodiscard]] std::string zshCompletion();
[[nodiscard]] std::string fishCompletion();

} // namespace tessly
