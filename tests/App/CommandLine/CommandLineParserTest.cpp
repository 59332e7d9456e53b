#include "CommandLineParser.h"

#include "HelpText.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace tessly {

using Verb = Invocation::Verb;

static void PrintTo(const Invocation& invocation, std::ostream* out)
{
    *out << "verb " << static_cast<int>(invocation.verb) << ", command "
         << static_cast<int>(invocation.command) << ", text " << invocation.text.toStdString();
}

namespace {

using Arguments = std::vector<const char*>;

Invocation command(CommandID id)
{
    return {.verb = Verb::command, .command = id};
}

Invocation withPosition(CommandID id, qint64 position, bool isPlain = false)
{
    Invocation invocation = command(id);
    invocation.position = position;
    invocation.isPlain = isPlain;
    return invocation;
}

Invocation listing(
    const QString& query, std::optional<ClipKind> kind = {}, qint64 limit = -1, bool isJSON = false)
{
    Invocation invocation = command(CommandID::list);
    invocation.query = query;
    invocation.kind = kind;
    invocation.limit = limit;
    invocation.isJSON = isJSON;
    return invocation;
}

TEST(CommandLineParser, StartsWithoutArguments)
{
    EXPECT_EQ(parseCommandLine({}), Invocation{});
    EXPECT_EQ(parseCommandLine({}).verb, Verb::start);
}

TEST(CommandLineParser, ReadsTheCommandsThatTakeNothing)
{
    const std::vector<std::pair<const char*, CommandID>> commands = {
        {"show", CommandID::show},     {"hide", CommandID::hide},     {"toggle", CommandID::toggle},
        {"pause", CommandID::pause},   {"resume", CommandID::resume}, {"quit", CommandID::quit},
        {"status", CommandID::status}, {"list", CommandID::list},     {"clear", CommandID::clear}};
    for (const auto& [name, id] : commands) {
        EXPECT_EQ(parseCommandLine({name}), command(id)) << name;
    }
}

TEST(CommandLineParser, ReadsTheCommandsThatTakeAFile)
{
    const auto withFile = [](CommandID id, const QByteArray& file) {
        Invocation invocation = command(id);
        invocation.file = file;
        return invocation;
    };
    for (const auto& [name, id] :
         {std::pair("export", CommandID::exportHistory), {"import", CommandID::importHistory}}) {
        EXPECT_EQ(parseCommandLine({name, "a file"}), withFile(id, "a file"));
        EXPECT_EQ(parseCommandLine({name, "-"}), withFile(id, "-"));
        EXPECT_EQ(parseCommandLine({name, "\xff"}), withFile(id, "\xff")) << "names are bytes";
        EXPECT_EQ(parseCommandLine({name, "--", "-x"}), withFile(id, "-x"));
        EXPECT_EQ(parseCommandLine({name, "--", "--x"}), withFile(id, "--x"));
    }
}

TEST(CommandLineParser, ACommandThatTakesAFileNeedsOneAndNoMore)
{
    const auto complaint = [](const Arguments& arguments) {
        const Invocation invocation = parseCommandLine(arguments);
        EXPECT_EQ(invocation.verb, Verb::wrongUsage);
        return invocation.text.toStdString();
    };
    EXPECT_EQ(
        complaint({"export"}), "\"tessly export\" needs a file, or - for what is piped; see "
                               "\"tessly export --help\"");
    EXPECT_EQ(
        complaint({"export", "a", "b"}),
        "\"tessly export\" takes no \"b\"; see \"tessly export --help\"");
    EXPECT_EQ(complaint({"import", ""}), "a file has a name; see \"tessly import --help\"");
    EXPECT_EQ(
        complaint({"import", "-x"}),
        "\"tessly import\" has no option \"-x\"; see \"tessly import --help\"");
}

TEST(CommandLineParser, ReadsTheCommandsThatTakeAPosition)
{
    const std::vector<std::pair<const char*, CommandID>> commands = {
        {"paste", CommandID::paste},
        {"copy", CommandID::copy},
        {"pin", CommandID::pin},
        {"unpin", CommandID::unpin},
        {"delete", CommandID::deleteEntry}};
    for (const auto& [name, id] : commands) {
        EXPECT_EQ(parseCommandLine({name, "7"}), withPosition(id, 7)) << name;
        EXPECT_EQ(parseCommandLine({name, "--", "7"}), withPosition(id, 7)) << name;
    }
    EXPECT_EQ(
        parseCommandLine({"pin", "9223372036854775807"}),
        withPosition(CommandID::pin, std::numeric_limits<qint64>::max()));
}

TEST(CommandLineParser, ReadsOptionsBeforeAndBehindThePosition)
{
    for (const auto& [name, id] : std::vector<std::pair<const char*, CommandID>>{
             {"paste", CommandID::paste}, {"copy", CommandID::copy}}) {
        EXPECT_EQ(parseCommandLine({name, "3", "--plain"}), withPosition(id, 3, true));
        EXPECT_EQ(parseCommandLine({name, "--plain", "3"}), withPosition(id, 3, true));
    }
    Invocation everything = command(CommandID::clear);
    everything.isEverything = true;
    EXPECT_EQ(parseCommandLine({"clear", "--everything"}), everything);
    Invocation texts = command(CommandID::importHistory);
    texts.file = "-";
    texts.isNullSeparated = true;
    EXPECT_EQ(parseCommandLine({"import", "--null", "-"}), texts);
    Invocation status = command(CommandID::status);
    status.isJSON = true;
    EXPECT_EQ(parseCommandLine({"status", "--json"}), status);
}

TEST(CommandLineParser, ReadsTheOptionsOfList)
{
    EXPECT_EQ(parseCommandLine({"list", "--json"}), listing({}, {}, -1, true));
    EXPECT_EQ(
        parseCommandLine({"list", "--query", "foo bar", "--kind", "richText", "--limit", "5"}),
        listing(u"foo bar"_s, ClipKind::richText, 5));
    EXPECT_EQ(
        parseCommandLine({"list", "--query=a=b", "--kind=link", "--limit=0", "--json"}),
        listing(u"a=b"_s, ClipKind::link, 0, true));
    EXPECT_EQ(parseCommandLine({"list", "--query", "--json"}), listing(u"--json"_s));
    EXPECT_EQ(parseCommandLine({"list", "--query", "größe"}), listing(u"größe"_s));
    EXPECT_EQ(parseCommandLine({"list", "--query="}), listing({}));
    for (const ClipKind kind : allClipKinds) {
        const QByteArray name = rawValue(kind).toUtf8();
        EXPECT_EQ(parseCommandLine({"list", "--kind", name.constData()}), listing({}, kind));
    }
}

TEST(CommandLineParser, KnowsEveryKind)
{
    ASSERT_EQ(kindNames().size(), allClipKinds.size());
    for (std::size_t i = 0; i < allClipKinds.size(); ++i) {
        EXPECT_EQ(std::string(kindNames()[i]), rawValue(allClipKinds[i]).toStdString());
    }
}

struct WrongUsage
{
    Arguments arguments;
    QString complaint;
};

TEST(CommandLineParser, RefusesAQueryThatNobodyTyped)
{
    const QByteArray longest(10'000, 'x');
    const QByteArray tooLong = longest + 'x';
    EXPECT_EQ(
        parseCommandLine({"list", "--query", longest.constData()}),
        listing(QString::fromLatin1(longest)));
    const Invocation refused = parseCommandLine({"list", "--query", tooLong.constData()});
    EXPECT_EQ(refused.verb, Verb::wrongUsage);
    EXPECT_EQ(
        refused.text, u"a query has 10000 characters at the most; see \"tessly list --help\""_s);
}

TEST(CommandLineParser, RefusesWhatMakesNoSenseInOneLineThatNamesIt)
{
    const std::vector<WrongUsage> cases = {
        {{"frobnicate"}, u"there is no command \"frobnicate\"; see \"tessly --help\""_s},
        {{""}, u"there is no command \"\"; see \"tessly --help\""_s},
        {{"Show"}, u"there is no command \"Show\"; see \"tessly --help\""_s},
        {{"--frobnicate"}, u"there is no option \"--frobnicate\"; see \"tessly --help\""_s},
        {{"--json"}, u"there is no option \"--json\"; see \"tessly --help\""_s},
        {{"--version", "x"}, u"\"--version\" stands alone; see \"tessly --help\""_s},
        {{"--help", "x"}, u"\"--help\" stands alone; see \"tessly --help\""_s},
        {{"show", "x"}, u"\"tessly show\" takes no \"x\"; see \"tessly show --help\""_s},
        {{"hide", "--json"},
         u"\"tessly hide\" has no option \"--json\"; see \"tessly hide --help\""_s},
        {{"list", "foo"}, u"\"tessly list\" takes no \"foo\"; see \"tessly list --help\""_s},
        {{"list", "--plain"},
         u"\"tessly list\" has no option \"--plain\"; see \"tessly list --help\""_s},
        {{"list", "--query"}, u"\"--query\" needs a value; see \"tessly list --help\""_s},
        {{"list", "--json=1"}, u"\"--json\" takes no value; see \"tessly list --help\""_s},
        {{"list", "--kind", "video"}, u"there is no kind \"video\"; see \"tessly list --help\""_s},
        {{"list", "--kind", ""}, u"there is no kind \"\"; see \"tessly list --help\""_s},
        {{"list", "--limit", "-1"},
         u"\"-1\" is no number of entries; see \"tessly list --help\""_s},
        {{"list", "--limit", "many"},
         u"\"many\" is no number of entries; see \"tessly list --help\""_s},
        {{"list", "--limit", "99999999999999999999"},
         u"\"99999999999999999999\" is no number of entries; see \"tessly list --help\""_s},
        {{"status", "--quiet"},
         u"\"tessly status\" has no option \"--quiet\"; see \"tessly status --help\""_s},
        {{"clear", "1"}, u"\"tessly clear\" takes no \"1\"; see \"tessly clear --help\""_s},
        {{"clear", "--all"},
         u"\"tessly clear\" has no option \"--all\"; see \"tessly clear --help\""_s},
        {{"paste", "1", "2"}, u"\"tessly paste\" takes no \"2\"; see \"tessly paste --help\""_s},
        {{"pin", "1", "--plain"},
         u"\"tessly pin\" has no option \"--plain\"; see \"tessly pin --help\""_s},
    };
    for (const auto& [arguments, complaint] : cases) {
        const Invocation invocation = parseCommandLine(arguments);
        EXPECT_EQ(invocation.verb, Verb::wrongUsage) << complaint.toStdString();
        EXPECT_EQ(invocation.text.toStdString(), complaint.toStdString());
    }
}

TEST(CommandLineParser, RefusesWhatIsNoPosition)
{
    for (const char* const name : {"paste", "copy", "pin", "unpin", "delete"}) {
        const Invocation missing = parseCommandLine({name});
        EXPECT_EQ(missing.verb, Verb::wrongUsage);
        EXPECT_EQ(
            missing.text.toStdString(), std::string("\"tessly ") + name +
                                            "\" needs the position of an entry; see \"tessly " +
                                            name + " --help\"");
        for (const char* const position :
             {"0", "-1", "1.5", "1x", "", " 1", "+1", "0x1", "one", "99999999999999999999"}) {
            const Invocation invocation = parseCommandLine({name, position});
            EXPECT_EQ(invocation.verb, Verb::wrongUsage) << name << ' ' << position;
            EXPECT_TRUE(invocation.text.startsWith(
                u"\"%1\" is no position: positions are numbers from 1"_s.arg(
                    QString::fromUtf8(position))))
                << invocation.text.toStdString();
        }
    }
}

TEST(CommandLineParser, RepeatsNothingThatATerminalWouldObey)
{
    const Invocation invocation = parseCommandLine({"\x1b]0;title\x07\nrm"});
    EXPECT_EQ(invocation.verb, Verb::wrongUsage);
    EXPECT_EQ(
        invocation.text.toStdString(),
        "there is no command \" ]0;title  rm\"; see \"tessly --help\"");
}

TEST(CommandLineParser, PrintsTheVersion)
{
    const auto invocation = parseCommandLine({"--version"});
    EXPECT_EQ(invocation.verb, Verb::print);
    EXPECT_EQ(invocation.text, u"tessly "_s + programVersion() + u'\n');
    EXPECT_FALSE(programVersion().isEmpty());
}

TEST(CommandLineParser, ExplainsItselfAndEachCommand)
{
    for (const char* const option : {"--help", "-h"}) {
        const auto invocation = parseCommandLine({option});
        EXPECT_EQ(invocation.verb, Verb::print);
        EXPECT_EQ(invocation.text.toStdString(), helpText());
    }
    for (const CommandGroup& group : commandGroups()) {
        for (const CommandDescription& described : group.commands) {
            const std::string name(described.name);
            for (const Arguments& arguments : {
                     Arguments{name.c_str(), "--help"},
                     Arguments{name.c_str(), "-h"},
                     Arguments{name.c_str(), "nonsense", "--help"},
                 }) {
                const auto invocation = parseCommandLine(arguments);
                EXPECT_EQ(invocation.verb, Verb::print);
                EXPECT_EQ(invocation.text.toStdString(), commandHelp(described));
            }
        }
    }
}

} // namespace
} // namespace tessly
