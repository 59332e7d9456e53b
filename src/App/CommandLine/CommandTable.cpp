#include "CommandTable.h"

#include <array>

namespace tessly {

namespace {

using Value = OptionDescription::Value;

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

constexpr std::array panelCommands = {
    CommandDescription{
        CommandID::show,
        "show",
        false,
        {},
        "open the Quick Paste panel",
        "Opens the Quick Paste panel. What is pasted from it goes to the window that was in "
        "front."},
    CommandDescription{
        CommandID::hide, "hide", false, {}, "close the panel", "Closes the Quick Paste panel."},
    CommandDescription{
        CommandID::toggle,
        "toggle",
        false,
        {},
        "open the panel, or close it",
        "Opens the Quick Paste panel, or closes it if it is open: for a key of your desktop."},
};

constexpr std::array programCommands = {
    CommandDescription{
        CommandID::status, "status", false, statusOptions, "tell how Tessly is doing",
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
        false,
        {},
        "stop recording copies",
        "Stops recording. What is copied from now on is not kept, until recording is resumed."},
    CommandDescription{
        CommandID::resume,
        "resume",
        false,
        {},
        "record copies again",
        "Resumes recording. What was copied meanwhile is not recorded."},
    CommandDescription{
        CommandID::quit,
        "quit",
        false,
        {},
        "end Tessly",
        "Ends Tessly, and returns when it has ended."},
};

constexpr std::array historyCommands = {
    CommandDescription{
        CommandID::list, "list", false, listOptions, "list the entries",
        "Lists the entries in the order of the panel: the pinned ones first, then by their last "
        "use. Each line tells the position, an asterisk for a pinned entry, the kind, the last "
        "use and the beginning of the content. The position is that in the whole history, also "
        "where only a part of it is listed; it is what the other commands take.\n\n"
        "Also works while Tessly is not running.\n\n"
        "With --json it is one array of objects with the keys position, id, kind, preview, "
        "createdAt, lastUsedAt (in seconds since 1970), sourceAppName, sourceBundleID, isPinned, "
        "pinOrder, copyCount and byteCount. What an entry does not have is null."},
    CommandDescription{
        CommandID::paste, "paste", true, plainOptions, "paste an entry into the window in front",
        "Pastes the entry into the window that is in front when the command is given: for a key "
        "of your desktop. Where nothing can be pasted into, the entry is only copied, and the "
        "command fails."},
    CommandDescription{
        CommandID::copy, "copy", true, plainOptions, "copy an entry to the clipboard",
        "Puts the entry on the clipboard."},
    CommandDescription{
        CommandID::pin,
        "pin",
        true,
        {},
        "pin an entry: it is listed first and never dropped",
        "Pins the entry: it is listed before all others and never dropped. One that is pinned "
        "already becomes the first of the pinned ones."},
    CommandDescription{CommandID::unpin, "unpin", true, {}, "unpin an entry", "Unpins the entry."},
    CommandDescription{
        CommandID::deleteEntry,
        "delete",
        true,
        {},
        "delete an entry, for good",
        "Deletes the entry. No trace of it is left on the disk."},
    CommandDescription{
        CommandID::clear, "clear", false, clearOptions, "delete all entries but the pinned ones",
        "Deletes all entries that are not pinned, without asking. No trace of them is left on the "
        "disk."},
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
