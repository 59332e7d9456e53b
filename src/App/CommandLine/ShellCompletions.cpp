#include "ShellCompletions.h"

#include "CommandTable.h"

#include <functional>

namespace tessly {

namespace {

using Value = OptionDescription::Value;

const char* const origin = "# Made by Tessly's build from its description of the command line.\n";

void forEachCommand(const std::function<void(const CommandDescription&)>& use)
{
    for (const CommandGroup& group : commandGroups()) {
        for (const CommandDescription& command : group.commands) {
            use(command);
        }
    }
}

std::string joinedKinds()
{
    std::string kinds;
    for (const std::string_view kind : kindNames()) {
        kinds += (kinds.empty() ? "" : " ") + std::string(kind);
    }
    return kinds;
}

/// In single quotes, as all three shells take them.
std::string inQuotes(std::string_view text)
{
    std::string quotedText = "'";
    for (const char character : text) {
        quotedText += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quotedText + "'";
}

/// A text within the brackets or behind the colon of a zsh specification, in single quotes.
std::string inSpecification(std::string_view text)
{
    std::string plain;
    for (const char character : text) {
        if (character == ':' || character == '[' || character == ']' || character == '\\') {
            plain += '\\';
        }
        plain += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return plain;
}

std::string zshOption(const OptionDescription& option)
{
    std::string specification =
        "'" + std::string(option.name) + "[" + inSpecification(option.summary) + "]";
    switch (option.value) {
    case Value::none:
        break;
    case Value::kind:
        specification += ":kind:(" + joinedKinds() + ")";
        break;
    case Value::text:
    case Value::count:
        specification += ":" + inSpecification(option.valueName) + ": ";
        break;
    }
    return specification + "'";
}

} // namespace

std::string bashCompletion()
{
    std::string commands;
    std::string cases;
    forEachCommand([&](const CommandDescription& command) {
        commands += std::string(command.name) + ' ';
        cases += "        " + std::string(command.name) + ") words='";
        for (const OptionDescription& option : command.options) {
            cases += std::string(option.name) + ' ';
        }
        cases += "--help'";
        if (command.operand == CommandDescription::Operand::file) {
            cases += " takes_file=yes";
        }
        cases += " ;;\n";
    });
    for (const StandaloneOption& option : standaloneOptions()) {
        commands += std::string(option.name) + ' ';
    }
    commands.pop_back();

    std::string text = "# bash completion for tessly\n";
    text += origin;
    text += "_tessly() {\n"
            "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} "
            "words= takes_file=\n"
            "    COMPREPLY=()\n"
            "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
            "        words='" +
            commands +
            "'\n"
            "    else\n"
            "        case $previous in\n"
            "        --kind)\n"
            "            mapfile -t COMPREPLY < <(compgen -W '" +
            joinedKinds() +
            "' -- \"$current\")\n"
            "            return ;;\n"
            "        --query | --limit) return ;;\n"
            "        esac\n"
            "        case ${COMP_WORDS[1]} in\n" +
            cases +
            "        esac\n"
            "        case $current in\n"
            "        -*) ;;\n"
            "        *)\n"
            "            if [ -n \"$takes_file\" ]; then\n"
            "                compopt -o filenames 2>/dev/null\n"
            "                mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
            "                return\n"
            "            fi\n"
            "            [ -z \"$current\" ] || return ;;\n"
            "        esac\n"
            "    fi\n"
            "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
            "}\n"
            "complete -F _tessly tessly\n";
    return text;
}

std::string zshCompletion()
{
    std::string text = "#compdef tessly\n";
    text += origin;
    text += "_tessly() {\n"
            "    local -a commands\n"
            "    commands=(\n";
    std::string cases;
    forEachCommand([&](const CommandDescription& command) {
        text += "        '" + std::string(command.name) + ":" + inSpecification(command.summary) +
                "'\n";
        cases += "    " + std::string(command.name) + ")\n        _arguments";
        for (const OptionDescription& option : command.options) {
            cases += " \\\n            " + zshOption(option);
        }
        cases += " \\\n            '--help[explain the command]'";
        if (command.operand == CommandDescription::Operand::position) {
            cases += " \\\n            '1:position of the entry: '";
        } else if (command.operand == CommandDescription::Operand::file) {
            cases += " \\\n            '1:file:_files'";
        }
        cases += " ;;\n";
    });
    text += "    )\n"
            "    if (( CURRENT == 2 )); then\n"
            "        _describe -t commands command commands\n"
            "        _arguments";
    for (const StandaloneOption& option : standaloneOptions()) {
        text += " \\\n            '" + std::string(option.name) + "[" +
                inSpecification(option.summary) + "]'";
    }
    text += "\n"
            "        return\n"
            "    fi\n"
            "    local command=$words[2]\n"
            "    shift words\n"
            "    (( CURRENT-- ))\n"
            "    case $command in\n" +
            cases +
            "    esac\n"
            "}\n"
            "_tessly \"$@\"\n";
    return text;
}

std::string fishCompletion()
{
    std::string text = "# fish completion for tessly\n";
    text += origin;
    text += "complete -c tessly -f\n";
    for (const StandaloneOption& option : standaloneOptions()) {
        text += "complete -c tessly -n __fish_use_subcommand -l " +
                std::string(option.name.substr(2)) + " -d " + inQuotes(option.summary) + '\n';
    }
    forEachCommand([&](const CommandDescription& command) {
        text += "complete -c tessly -n __fish_use_subcommand -a " + std::string(command.name) +
                " -d " + inQuotes(command.summary) + '\n';
        const std::string condition = "complete -c tessly -n '__fish_seen_subcommand_from " +
                                      std::string(command.name) + "' -l ";
        for (const OptionDescription& option : command.options) {
            text += condition + std::string(option.name.substr(2));
            switch (option.value) {
            case Value::none:
                break;
            case Value::kind:
                text += " -x -a " + inQuotes(joinedKinds());
                break;
            case Value::text:
            case Value::count:
                text += " -x";
                break;
            }
            text += " -d " + inQuotes(option.summary) + '\n';
        }
        text += condition + "help -d 'explain the command'\n";
        if (command.operand == CommandDescription::Operand::file) {
            text += "complete -c tessly -n '__fish_seen_subcommand_from " +
                    std::string(command.name) + "' -F\n";
        }
    });
    return text;
}

} // namespace tessly
