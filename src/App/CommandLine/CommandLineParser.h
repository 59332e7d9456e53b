#pragma once

#include "Invocation.h"

#include <vector>

namespace tessly {

/// `arguments` without the program's name. Pure.
[[nodiscard]] Invocation parseCommandLine(const std::vector<const char*>& arguments);

/// "1.2.3"
[[nodiscard]] QString programVersion();

} // namespace tessly
