#pragma once

#include "CommandTable.h"

#include <string>

namespace tessly {

/// What `tessly --help` prints.
[[nodiscard]] std::string helpText();

/// What `tessly COMMAND --help` prints.
[[nodiscard]] std::string commandHelp(const CommandDescription& command);

/// How a command is written: "list [--query TEXT] [--json]", without the program's name.
[[nodiscard]] std::string synopsis(const CommandDescription& command);

/// How an option is written: "--query TEXT".
[[nodiscard]] std::string synopsis(const OptionDescription& option);

} // namespace tessly
