#include "CommandTable.h"

#include <array>

namespace tessly {

namespace {

using Value = OptionDescription::Value;
using Operand = CommandDescription::Operand;

constexpr OptionDescription plain = {
    OptionID::plain, "--plain", Value::none, "", "as plain text, without its formatting"};
constexpr OptionDescription json = {
    OptionID::json, "--json", Value::none, "", "print JSON, for other programs"};

constexpr std::array statusOptions = {json};
constexpr std::array listOptions = {
    OptionDescription{
        OptionID::query, "--query", Value::text, "TEXT",
        "only entries that the panel finds for this text"},
    OptionDescription{
        OptionID::kind, "--kind", Value::kind, "KIND",
        "only entries of one kind: text, richText, image, files or link"},
    OptionDescription{
        OptionID::limit, "--limit", Value::count, "COUNT",
        "the first COUNT of them; all without this option"},
    json,
};
constexpr std::array plainOptions = {plain};
constexpr std::array clearOptions = {
    OptionDescription{
        OptionID::everything, "--everything", Value::none, "", "the pinned entries too"},
};

constexpr std::array importOptions = {
    OptionDescription{
        OptionID::null, "--null", Value::none, "",
        "FILE has plain texts, each ended by a NUL, the newest first"},
};

constexpr std::array panelCommands = {
    CommandDescription{
        CommandID::show,
        "show",
        Operand::none,
        {},
        "open the Quick Paste panel",
        "Opens the Quick Paste panel. What is pasted from it goes to the window that was in "
        "front."},
    CommandDescription{
        CommandID::hide,
        "hide",
        Operand::none,
        {},
        "close the panel",
        "Closes the Quick Paste panel."},
    CommandDescription{
        CommandID::toggle,
        "toggle",
        Operand::none,
        {},
        "open the panel, or close it",
        "Opens the Quick Paste panel, or closes it if it is open: for a key of your desktop."},
};

constexpr std::array programCommands = {
    CommandDescription{
        CommandID::status, "status", Operand::none, statusOptions, "tell how Tessly is doing",
        "Tells whether Tessly runs and records, how many entries it holds, how many of them are "
        "pinned, how many bytes they take on disk, the type of the session, which protocols of the "
        "desktop were found, and what works here: recording copies, pasting into other windows, "
        "the keys for the first ten entries, the icon in the tray.\n\n"
        "Where the last copy could not be saved, it also says why.\n\n"
        "Also works while Tessly is not running, when none of these does.\n\n"
        "With --json it is one object with the keys running, paused, items, pinned, bytes, "
        "session (\"x11\" or \"wayland\"), capture, paste, hotKeys, tray and protocols, "
        "and lastError, which is only there if the last copy could not be saved."},
    CommandDescription{
        CommandID::pause,
        "pause",
        Operand::none,
        {},
        "stop recording copies",
        "Stops recording. What is copied from now on is not kept, until recording is resumed."},
    CommandDescription{
        CommandID::resume,
        "resume",
        Operand::none,
        {},
        "record copies again",
        "Resumes recording. What was copied meanwhile is not recorded."},
    CommandDescription{
        CommandID::quit,
        "quit",
        Operand::none,
        {},
        "end Tessly",
        "Ends Tessly, and returns when it has ended."},
};

constexpr std::array historyCommands = {
    CommandDescription{
        CommandID::list, "list", Operand::none, listOptions, "list the entries",
        "Lists the entries in the order of the panel: the pinned ones first, then by their last "
        "use. Each line tells the position, an asterisk for a pinned entry, the kind, the last "
        "use and the beginning of the content. The position is that in the whole history, also "
        "where only a part of it is listed; it is what the other commands take.\n\n"
        "Also works while Tessly is not running.\n\n"
        "With --json it is one array of objects with the keys position, id, kind, preview, "
        "createdAt, lastUsedAt (in seconds since 1970), sourceAppName, sourceBundleID, isPinned, "
        "pinOrder, copyCount and byteCount. What an entry does not have is null."},
    CommandDescription{
        CommandID::paste, "paste", Operand::position, plainOptions,
        "paste an entry into the window in front",
        "Pastes the entry into the window that is in front when the command is given: for a key "
        "of your desktop. Where nothing can be pasted into, the entry is only copied, and the "
        "command fails."},
    CommandDescription{
        CommandID::copy, "copy", Operand::position, plainOptions, "copy an entry to the clipboard",
        "Puts the entry on the clipboard."},
    CommandDescription{
        CommandID::pin,
        "pin",
        Operand::position,
        {},
        "pin an entry: it is listed first and never dropped",
        "Pins the entry: it is listed before all others and never dropped. One that is pinned "
        "already becomes the first of the pinned ones."},
    CommandDescription{
        CommandID::unpin, "unpin", Operand::position, {}, "unpin an entry", "Unpins the entry."},
    CommandDescription{
        CommandID::deleteEntry,
        "delete",
        Operand::position,
        {},
        "delete an entry, for good",
        "Deletes the entry. No trace of it is left on the disk."},
    CommandDescription{
        CommandID::clear, "clear", Operand::none, clearOptions,
        "delete all entries but the pinned ones",
        "Deletes all entries that are not pinned, without asking. No trace of them is left on the "
        "disk."},
    CommandDescription{
        CommandID::exportHistory,
        "export",
        Operand::file,
        {},
        "write all entries to a file, for a backup or another machine",
        "Writes all entries to FILE, with everything that belongs to them: contents, times, pins, "
        "where each was copied and how often. The file is JSON lines, one entry a line, contents "
        "in base64.\n\n"
        "A file that is there is replaced once the new one is whole and on the disk; if anything "
        "fails, it stays as it was. An entry that is damaged is left out and said on standard "
        "error; the exit status is 1 then. Only you can read the file; who can read it has all "
        "that you "
        "have copied. With - as FILE it goes to standard output.\n\n"
        "Also works while Tessly is not running."},
    CommandDescription{
        CommandID::importHistory, "import", Operand::file, importOptions,
        "add the entries of a file that \"tessly export\" has written",
        "Adds the entries of FILE, which \"tessly export\" has written, with their times, pins and "
        "all else. What the history has already stays as it is there. Nothing goes to make room: "
        "once there are as many entries that are not pinned as the settings let the history keep, "
        "more of them are refused.\n\n"
        "Every line is checked. Why one is refused is said on standard error, as "
        "\"FILE:LINE: reason\". At the end a line tells how many entries were added, were there "
        "already, and were refused; the exit status is 1 if any was refused or the file was not "
        "read to its end. An import that ends early has added whole entries, and can be "
        "repeated.\n\n"
        "With --null FILE has plain texts, as other programs print them for \"xargs --null\": each "
        "up to the next NUL, the newest first. Each becomes an entry; it may have many lines, must "
        "be UTF-8, and is passed over if it is empty. They are listed in their order below all "
        "that the history has already, and dated accordingly. What is refused is named by its "
        "place among them, in place of a line. Which of them are secret cannot be known: all are "
        "added.\n\n"
        "With - as FILE it reads standard input. Also works while Tessly is not running, which "
        "must then not be started before the import has ended."},
};

constexpr std::array groups = {
    CommandGroup{"The panel", panelCommands},
    CommandGroup{"The program", programCommands},
    CommandGroup{"The history", historyCommands},
};

constexpr std::array exampleList = {
    Example{
        "tessly paste 3",
        "Pastes the third entry into the window you are in, if you bind it to a key in the "
        "settings of your desktop or compositor. In sway, for one: bindsym Mod1+Shift+3 exec "
        "tessly paste 3"},
    Example{
        "tessly list --query invoice --limit 5",
        "Shows the first five entries with a word that begins with \"invoice\"."},
    Example{
        "tessly list --json | jq -r '.[] | select(.kind == \"link\") | .preview'",
        "Prints every link, the first 400 characters of each."},
    Example{
        "tessly copy \"$(tessly list --query foo --json | jq '.[0].position')\" --plain",
        "Copies the first entry that is found, as plain text."},
    Example{
        "tessly export - | ssh other-machine tessly import -",
        "Adds what the history has here to that of another machine."},
    Example{
        "tessly import --null texts",
        "Adds the texts that another program has written to a file, each ended by a NUL. They are "
        "listed below all others."},
    Example{
        "tessly pause; ./copies-secrets; tessly resume",
        "Keeps what one program copies out of the history."},
};

constexpr std::array statuses = {
    ExitStatus{0, "done"},
    ExitStatus{exitFailed, "refused or failed; one line on standard error says why"},
    ExitStatus{exitWrongUsage, "wrong usage"},
    ExitStatus{exitNotRunning, "Tessly is not running"},
};

constexpr std::array standalone = {
    StandaloneOption{"--version", "print the version"},
    StandaloneOption{"--help", "print this help; behind a command, explain the command"},
};

constexpr std::array<std::string_view, 5> kinds = {"text", "richText", "image", "files", "link"};

} // namespace

std::string_view operandName(Operand operand)
{
    switch (operand) {
    case Operand::none:
        break;
    case Operand::position:
        return "N";
    case Operand::file:
        return "FILE";
    }
    return "";
}

std::span<const CommandGroup> commandGroups()
{
    return groups;
}

const CommandDescription* findCommand(std::string_view name)
{
    for (const CommandGroup& group : groups) {
        for (const CommandDescription& command : group.commands) {
            if (command.name == name) {
                return &command;
            }
        }
    }
    return nullptr;
}

std::span<const Example> examples()
{
    return exampleList;
}

std::span<const ExitStatus> exitStatuses()
{
    return statuses;
}

std::span<const StandaloneOption> standaloneOptions()
{
    return standalone;
}

std::span<const std::string_view> kindNames()
{
    return kinds;
}

} // namespace tessly
