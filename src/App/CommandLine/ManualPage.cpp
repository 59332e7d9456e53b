#include "ManualPage.h"

#include "CommandTable.h"
#include "HelpText.h"

namespace tessly {

namespace {

/// Text as roff takes it: a leading dot or quote would be a request, a plain dash a hyphen.
std::string escaped(std::string_view text)
{
    std::string roff;
    bool isLineStart = true;
    for (const char character : text) {
        if (isLineStart && (character == '.' || character == '\'')) {
            roff += "\\&";
        }
        switch (character) {
        case '\\':
            roff += "\\e";
            break;
        case '-':
            roff += "\\-";
            break;
        case '\'':
            roff += "\\(aq";
            break;
        case '"':
            roff += "\\(dq";
            break;
        case '~':
            roff += "\\(ti";
            break;
        case '^':
            roff += "\\(ha";
            break;
        default:
            roff += character;
        }
        isLineStart = character == '\n';
    }
    return roff;
}

/// Paragraphs, which an empty line separates.
std::string paragraphs(std::string_view text)
{
    std::string roff = escaped(text);
    for (auto at = roff.find("\n\n"); at != std::string::npos; at = roff.find("\n\n", at)) {
        roff.replace(at, 2, "\n.IP\n");
    }
    return roff + '\n';
}

std::string section(std::string_view title)
{
    return ".SH " + std::string(title) + '\n';
}

std::string bold(std::string_view text)
{
    return "\\fB" + escaped(text) + "\\fR";
}

std::string item(std::string_view tag, std::string_view text)
{
    return ".TP\n" + bold(tag) + '\n' + paragraphs(text);
}

std::string options(const CommandDescription& command)
{
    std::string roff;
    for (const OptionDescription& option : command.options) {
        roff += ".RS\n" + item(synopsis(option), option.summary) + ".RE\n";
    }
    return roff;
}

std::string commands()
{
    std::string roff = section("COMMANDS");
    roff += escaped(
        "N is an entry's position in the whole history, counted from 1, as \"tessly list\" shows "
        "it.");
    roff += '\n';
    for (const CommandGroup& group : commandGroups()) {
        roff += ".SS " + std::string(group.title) + '\n';
        for (const CommandDescription& command : group.commands) {
            roff += item(synopsis(command), command.details) + options(command);
        }
    }
    return roff;
}

std::string files()
{
    return section("FILES") +
           item(
               "~/.local/share/Tessly/history.sqlite",
               "The history. In $XDG_DATA_HOME where that is set. Nobody but its owner can read "
               "it.") +
           item(
               "~/.local/share/Tessly/remote-desktop-token",
               "Where the desktop asks before a program may press keys: what its leave is "
               "remembered by. Without it the desktop asks again.") +
           item(
               "~/.config/com.brackmoor.tessly.ini",
               "The settings. In $XDG_CONFIG_HOME where that is set.");
}

} // namespace

std::string manualPage(const std::string& version)
{
    std::string roff = ".TH TESSLY 1 \"\" \"Tessly " + version + "\" \"User Commands\"\n";
    roff += section("NAME") + "tessly \\- clipboard history for the Linux desktop\n";
    roff += section("SYNOPSIS") + bold("tessly") + '\n';
    for (const CommandGroup& group : commandGroups()) {
        for (const CommandDescription& command : group.commands) {
            roff += ".br\n" + bold("tessly " + synopsis(command)) + '\n';
        }
    }
    for (const StandaloneOption& option : standaloneOptions()) {
        roff += ".br\n" + bold("tessly " + std::string(option.name)) + '\n';
    }
    roff += section("DESCRIPTION");
    roff += escaped(
        "Tessly records what is copied to the clipboard and keeps it in a history, from which it "
        "can be searched and pasted again. It runs in the background, once for a user. Without a "
        "command it starts; if it runs already, its panel opens.");
    roff += "\n.PP\n";
    roff += escaped(
        "The commands speak to the running program over the session bus, as com.brackmoor.tessly, "
        "whose object /com/brackmoor/tessly offers the same to other programs.");
    roff += '\n';
    roff += commands();
    roff += section("OPTIONS");
    for (const StandaloneOption& option : standaloneOptions()) {
        roff += item(option.name, option.summary);
    }
    roff += section("EXIT STATUS");
    for (const ExitStatus& status : exitStatuses()) {
        roff += item(std::to_string(status.status), status.meaning);
    }
    roff += files();
    roff += section("EXAMPLES");
    for (const Example& example : examples()) {
        roff += item(example.command, example.explanation);
    }
    return roff;
}

} // namespace tessly
