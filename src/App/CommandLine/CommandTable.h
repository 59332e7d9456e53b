#pragma once

#include <span>
#include <string_view>

namespace tessly {

// The one description of the command line. Parsing, help, the manual page and the completions of
// the shells are all made from it. Texts are ASCII.

enum class CommandID {
    show,
    hide,
    toggle,
    status,
    pause,
    resume,
    quit,
    list,
    paste,
    copy,
    pin,
    unpin,
    deleteEntry,
    clear,
    exportHistory,
    importHistory,
};

enum class OptionID { json, query, kind, limit, plain, everything, null };

struct OptionDescription
{
    enum class Value { none, text, kind, count };

    OptionID id = OptionID::json;
    /// With its dashes.
    std::string_view name;
    Value value = Value::none;
    /// What stands for the value in help; empty without one.
    std::string_view valueName;
    /// One line, without a full stop.
    std::string_view summary;
};

struct CommandDescription
{
    /// What stands behind the name.
    enum class Operand {
        none,
        /// The position of an entry.
        position,
        /// A file, or "-".
        file,
    };

    CommandID id = CommandID::show;
    std::string_view name;
    Operand operand = Operand::none;
    std::span<const OptionDescription> options;
    /// One line, without a full stop.
    std::string_view summary;
    /// Whole sentences; an empty line separates paragraphs.
    std::string_view details;
};

struct CommandGroup
{
    std::string_view title;
    std::span<const CommandDescription> commands;
};

struct Example
{
    std::string_view command;
    std::string_view explanation;
};

struct ExitStatus
{
    int status = 0;
    std::string_view meaning;
};

inline constexpr int exitFailed = 1;
inline constexpr int exitWrongUsage = 2;
inline constexpr int exitNotRunning = 3;

/// What stands for the operand in help; empty without one.
[[nodiscard]] std::string_view operandName(CommandDescription::Operand operand);
[[nodiscard]] std::span<const CommandGroup> commandGroups();
/// Null if there is none of this name.
[[nodiscard]] const CommandDescription* findCommand(std::string_view name);
[[nodiscard]] std::span<const Example> examples();
[[nodiscard]] std::span<const ExitStatus> exitStatuses();

/// The options that stand alone: "--version" and "--help".
struct StandaloneOption
{
    std::string_view name;
    std::string_view summary;
};
[[nodiscard]] std::span<const StandaloneOption> standaloneOptions();

/// The names that the option "--kind" takes.
[[nodiscard]] std::span<const std::string_view> kindNames();

} // namespace tessly
