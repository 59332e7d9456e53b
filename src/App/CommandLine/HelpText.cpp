#include "HelpText.h"

#include <algorithm>

namespace tessly {

namespace {

constexpr std::size_t lineLength = 79;
constexpr std::size_t summaryColumn = 25;

/// `text`, its first line behind what stands there already, in lines that begin at `indent`.
std::string wrapped(std::string_view text, std::size_t indent, std::size_t column)
{
    std::string lines;
    while (!text.empty()) {
        if (text.front() == '\n') {
            lines += '\n';
            column = 0;
            text.remove_prefix(1);
            continue;
        }
        const std::string_view word = text.substr(0, text.find_first_of(" \n"));
        if (column > indent && column + 1 + word.size() > lineLength) {
            lines += '\n';
            column = 0;
        }
        if (column < indent) {
            lines += std::string(indent - column, ' ');
            column = indent;
        } else if (column > indent) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
        text.remove_prefix(word.size());
        if (!text.empty() && text.front() == ' ') {
            text.remove_prefix(1);
        }
    }
    return lines + '\n';
}

std::string paragraph(std::string_view text, std::size_t indent = 0)
{
    return wrapped(text, indent, 0);
}

/// A command's name with its operand.
std::string usage(const CommandDescription& command)
{
    const std::string_view operand = operandName(command.operand);
    return std::string(command.name) + (operand.empty() ? "" : " ") + std::string(operand);
}

/// A line of a list: a name, and behind it, in a column of its own, what it stands for.
std::string entry(std::string_view name, std::string_view summary)
{
    std::string line = "  " + std::string(name);
    if (line.size() + 2 > summaryColumn) {
        return line + '\n' + paragraph(summary, summaryColumn);
    }
    line += std::string(summaryColumn - line.size(), ' ');
    return line + wrapped(summary, summaryColumn, summaryColumn);
}

} // namespace

std::string synopsis(const OptionDescription& option)
{
    std::string text(option.name);
    if (option.value != OptionDescription::Value::none) {
        text += ' ';
        text += option.valueName;
    }
    return text;
}

std::string synopsis(const CommandDescription& command)
{
    std::string text = usage(command);
    for (const OptionDescription& option : command.options) {
        text += " [" + synopsis(option) + "]";
    }
    return text;
}

std::string helpText()
{
    std::string text = "Usage: tessly [COMMAND]\n\n";
    text += paragraph(
        "Tessly keeps a history of what you copy. Without a command it starts; if it runs "
        "already, its panel opens.");
    for (const CommandGroup& group : commandGroups()) {
        text += '\n' + std::string(group.title) + '\n';
        for (const CommandDescription& command : group.commands) {
            text += entry(usage(command), command.summary);
            for (const OptionDescription& option : command.options) {
                text += entry("  " + synopsis(option), option.summary);
            }
        }
    }
    text += '\n';
    text += paragraph(
        "N is an entry's position in the whole history, counted from 1, as \"tessly list\" shows "
        "it.");
    text += "\nOptions\n";
    for (const StandaloneOption& option : standaloneOptions()) {
        text += entry(option.name, option.summary);
    }
    text += "\nExamples\n";
    for (const Example& example : examples()) {
        text += "  " + std::string(example.command) + '\n' + paragraph(example.explanation, 6);
    }
    text += "\nExit status\n";
    for (const ExitStatus& status : exitStatuses()) {
        text += "  " + std::to_string(status.status) + "  " + std::string(status.meaning) + '\n';
    }
    return text;
}

std::string commandHelp(const CommandDescription& command)
{
    std::string text = paragraph("Usage: tessly " + synopsis(command)) + '\n';
    text += paragraph(command.details);
    if (command.operand == CommandDescription::Operand::position) {
        text += '\n';
        text += paragraph(
            "N is the entry's position in the whole history, counted from 1, as \"tessly list\" "
            "shows it.");
    }
    text += "\nOptions\n";
    for (const OptionDescription& option : command.options) {
        text += entry(synopsis(option), option.summary);
    }
    text += entry("--help", "print this help");
    const std::string prefix = "tessly " + std::string(command.name);
    std::string exampleLines;
    for (const Example& example : examples()) {
        if (example.command.starts_with(prefix)) {
            exampleLines +=
                "  " + std::string(example.command) + '\n' + paragraph(example.explanation, 6);
        }
    }
    return exampleLines.empty() ? text : text + "\nExamples\n" + exampleLines;
}

} // namespace tessly
