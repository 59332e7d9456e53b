#include "CommandLineParser.h"
#include "HelpText.h"
#include "ManualPage.h"
#include "ShellCompletions.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstring>
#include <functional>
#include <regex>
#include <utility>

using namespace Qt::StringLiterals;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

namespace tessly {
namespace {

void forEachCommand(const std::function<void(const CommandDescription&)>& use)
{
    for (const CommandGroup& group : commandGroups()) {
        for (const CommandDescription& command : group.commands) {
            use(command);
        }
    }
}

/// Without the marks that roff needs.
std::string plain(std::string roff)
{
    for (const auto& [mark, text] : std::vector<std::pair<std::string, std::string>>{
             {"\\-", "-"}, {"\\(dq", "\""}, {"\\(aq", "'"}, {"\\(ti", "~"}, {"\\e", "\\"}}) {
        for (auto at = roff.find(mark); at != std::string::npos; at = roff.find(mark, at)) {
            roff.replace(at, mark.size(), text);
            at += text.size();
        }
    }
    return roff;
}

struct Ran
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Ran run(const QString& program, const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(20000)) {
        ADD_FAILURE() << program.toStdString() << ": " << process.errorString().toStdString();
        return {};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QString write(const QTemporaryDir& folder, const QString& name, const std::string& text)
{
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromStdString(text));
    return file.fileName();
}

#define NEEDS(program)                                                                             \
    if (QStandardPaths::findExecutable(program).isEmpty()) {                                       \
        GTEST_SKIP() << "not installed: " << qPrintable(program);                                  \
    }

TEST(Documents, HelpListsEveryCommandAndOptionAndTeaches)
{
    const std::string help = helpText();
    forEachCommand([&](const CommandDescription& command) {
        EXPECT_THAT(help, HasSubstr("\n  " + std::string(command.name)));
        EXPECT_THAT(help, HasSubstr(std::string(command.summary.substr(0, 20))));
        for (const OptionDescription& option : command.options) {
            EXPECT_THAT(help, HasSubstr("\n    " + synopsis(option)));
        }
        const std::string own = commandHelp(command);
        EXPECT_THAT(own, HasSubstr("Usage: tessly " + synopsis(command).substr(0, 60)));
        for (const OptionDescription& option : command.options) {
            EXPECT_THAT(own, HasSubstr("\n  " + synopsis(option)));
        }
    });
    for (const Example& example : examples()) {
        EXPECT_THAT(help, HasSubstr("\n  " + std::string(example.command) + '\n'));
    }
    for (const ExitStatus& status : exitStatuses()) {
        EXPECT_THAT(help, HasSubstr(std::to_string(status.status) + "  "));
    }
}

TEST(Documents, HelpFitsATerminal)
{
    const auto expectFits = [](const std::string& text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80U) << line;
            EXPECT_TRUE(line.empty() || line.back() != ' ') << '"' << line << '"';
        }
        EXPECT_EQ(text.back(), '\n');
    };
    expectFits(helpText());
    forEachCommand([&](const CommandDescription& command) { expectFits(commandHelp(command)); });
}

TEST(Documents, EveryExampleIsACommandThatIsUnderstood)
{
    for (const Example& example : examples()) {
        // What the shell would cut the first command into, as far as the examples go.
        std::istringstream words(std::string(example.command));
        std::string word;
        words >> word;
        ASSERT_EQ(word, "tessly");
        words >> word;
        word.erase(word.find_last_not_of(';') + 1);
        EXPECT_NE(findCommand(word), nullptr) << example.command;
    }
}

TEST(Documents, TheManualPageHasEveryCommandAndOption)
{
    const std::string page = plain(manualPage("1.2.3"));
    EXPECT_THAT(page, HasSubstr(".TH TESSLY 1 \"\" \"Tessly 1.2.3\""));
    for (const char* const title :
         {"NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS", "FILES",
          "EXAMPLES"}) {
        EXPECT_THAT(page, HasSubstr(std::string("\n.SH ") + title + '\n'));
    }
    forEachCommand([&](const CommandDescription& command) {
        EXPECT_THAT(page, HasSubstr("\\fBtessly " + synopsis(command) + "\\fR"));
        EXPECT_THAT(page, HasSubstr("\\fB" + synopsis(command) + "\\fR"));
        for (const OptionDescription& option : command.options) {
            EXPECT_THAT(page, HasSubstr("\\fB" + synopsis(option) + "\\fR"));
        }
    });
}

TEST(Documents, TheManualPageIsGoodRoff)
{
    NEEDS(u"groff"_s);
    const Ran ran =
        run(u"groff"_s, {u"-man"_s, u"-Tutf8"_s, u"-ww"_s, u"-P-c"_s, u"-P-b"_s, u"-P-u"_s},
            QByteArray::fromStdString(manualPage("1.2.3")));
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.errors, "");
    // Without bold and underlined letters; in the synopsis, where no line is broken before it.
    EXPECT_THAT(ran.output.toStdString(), HasSubstr(" tessly list [--query TEXT]"));
}

/// What bash offers for the last of these words.
QByteArrayList bashOffers(const QStringList& words)
{
    const QTemporaryDir folder;
    const QString script = write(folder, u"tessly.bash"_s, bashCompletion());
    QStringList arguments{
        u"--norc"_s, u"-c"_s,
        u"source \"$0\"; COMP_WORDS=(tessly \"$@\"); COMP_CWORD=$#; _tessly; "
        "printf '%s\\n' \"${COMPREPLY[@]}\""_s,
        script};
    const Ran ran = run(u"bash"_s, arguments + words);
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.errors, "");
    QByteArrayList offers = ran.output.split('\n');
    offers.removeAll(QByteArray());
    return offers;
}

TEST(Documents, BashOffersEveryCommand)
{
    std::vector<std::string> expected = {"--version", "--help"};
    forEachCommand([&](const CommandDescription& command) { expected.emplace_back(command.name); });
    std::vector<std::string> offered;
    for (const QByteArray& word : bashOffers({u""_s})) {
        offered.push_back(word.toStdString());
    }
    EXPECT_THAT(offered, UnorderedElementsAreArray(expected));
    EXPECT_THAT(bashOffers({u"p"_s}), ElementsAre("pause", "paste", "pin"));
    EXPECT_THAT(bashOffers({u"x"_s}), IsEmpty());
}

TEST(Documents, BashOffersTheOptionsOfTheCommand)
{
    forEachCommand([&](const CommandDescription& command) {
        std::vector<std::string> expected = {"--help"};
        for (const OptionDescription& option : command.options) {
            expected.emplace_back(option.name);
        }
        std::vector<std::string> offered;
        const QString name = QString::fromStdString(std::string(command.name));
        for (const QByteArray& word : bashOffers({name, u"--"_s})) {
            offered.push_back(word.toStdString());
        }
        EXPECT_THAT(offered, UnorderedElementsAreArray(expected)) << command.name;
    });
    EXPECT_THAT(bashOffers({u"paste"_s, u"3"_s, u"--p"_s}), ElementsAre("--plain"));
    EXPECT_THAT(bashOffers({u"paste"_s, u"3"_s}), IsEmpty());
    EXPECT_THAT(bashOffers({u"list"_s, u"--kind"_s, u""_s}), SizeIs(5));
    EXPECT_THAT(bashOffers({u"list"_s, u"--kind"_s, u"rich"_s}), ElementsAre("richText"));
    EXPECT_THAT(bashOffers({u"list"_s, u"--query"_s, u""_s}), IsEmpty());
    EXPECT_THAT(bashOffers({u"frobnicate"_s, u""_s}), IsEmpty());
}

TEST(Documents, BashOffersFilesWhereACommandTakesOne)
{
    const QTemporaryDir folder;
    const QString file = write(folder, u"my export.jsonl"_s, "");
    for (const QString& command : {u"export"_s, u"import"_s}) {
        EXPECT_THAT(
            bashOffers({command, folder.filePath(u"my"_s)}), ElementsAre(file.toLocal8Bit()));
    }
    EXPECT_THAT(bashOffers({u"paste"_s, folder.filePath(u"my"_s)}), IsEmpty());
}

TEST(Documents, ZshTakesItsCompletion)
{
    NEEDS(u"zsh"_s);
    const QTemporaryDir folder;
    write(folder, u"_tessly"_s, zshCompletion());
    const Ran syntax = run(u"zsh"_s, {u"-n"_s, folder.filePath(u"_tessly"_s)});
    EXPECT_EQ(syntax.errors, "");
    EXPECT_EQ(syntax.status, 0);
    // compinit finds it by its first line and autoloads it.
    const Ran loaded =
        run(u"zsh"_s,
            {u"-f"_s, u"-c"_s,
             u"fpath=($1 $fpath); autoload -U compinit; compinit -D -u; print -r $_comps[tessly]; "
             "autoload +X _tessly && functions _tessly | wc -l"_s,
             u"zsh"_s, folder.path()});
    EXPECT_EQ(loaded.errors, "");
    EXPECT_THAT(loaded.output.toStdString(), HasSubstr("_tessly\n"));
    const std::string script = zshCompletion();
    forEachCommand([&](const CommandDescription& command) {
        EXPECT_THAT(script, HasSubstr("'" + std::string(command.name) + ":"));
        const std::string own =
            script.substr(script.find("    " + std::string(command.name) + ")"));
        EXPECT_EQ(
            own.substr(0, own.find(";;")).find("_files") != std::string::npos,
            command.operand == CommandDescription::Operand::file)
            << command.name;
        for (const OptionDescription& option : command.options) {
            EXPECT_THAT(script, HasSubstr("'" + std::string(option.name) + "["));
        }
    });
}

QByteArrayList fishOffers(const QString& line)
{
    const QTemporaryDir folder;
    const QString script = write(folder, u"tessly.fish"_s, fishCompletion());
    const Ran ran =
        run(u"env"_s, {u"HOME="_s + folder.path(), u"fish"_s, u"--no-config"_s, u"-c"_s,
                       u"source $argv[1]; complete -C $argv[2]"_s, script, line});
    EXPECT_EQ(ran.errors, "");
    EXPECT_EQ(ran.status, 0);
    QByteArrayList offers;
    for (const QByteArray& offer : ran.output.split('\n')) {
        if (!offer.isEmpty()) {
            offers.append(offer.split('\t').first());
        }
    }
    return offers;
}

TEST(Documents, FishOffersCommandsAndTheirOptions)
{
    NEEDS(u"fish"_s);
    std::vector<std::string> expected;
    forEachCommand([&](const CommandDescription& command) { expected.emplace_back(command.name); });
    std::vector<std::string> offered;
    for (const QByteArray& word : fishOffers(u"tessly "_s)) {
        offered.push_back(word.toStdString());
    }
    EXPECT_THAT(offered, UnorderedElementsAreArray(expected));
    EXPECT_THAT(fishOffers(u"tessly list --k"_s), ElementsAre("--kind"));
    EXPECT_THAT(fishOffers(u"tessly list --kind r"_s), ElementsAre("richText"));
    // From its fourth version on, fish also offers options that have the letters anywhere.
    EXPECT_THAT(fishOffers(u"tessly paste 3 --pl"_s), ElementsAre("--plain"));
    EXPECT_THAT(fishOffers(u"tessly pin 3 --p"_s), Not(Contains("--plain")));
    EXPECT_THAT(fishOffers(u"tessly pin 3 --"_s), ElementsAre("--help"));
    EXPECT_THAT(fishOffers(u"tessly --ver"_s), ElementsAre("--version"));
    const QTemporaryDir folder;
    const QString file = write(folder, u"export.jsonl"_s, "");
    const QString beginning = folder.filePath(u"ex"_s);
    EXPECT_THAT(fishOffers(u"tessly import "_s + beginning), ElementsAre(file.toLocal8Bit()));
    EXPECT_THAT(fishOffers(u"tessly pin "_s + beginning), IsEmpty());
}

TEST(Documents, TheDesktopEntryIsValidAndItsActionsAreCommands)
{
    const QString path = QStringLiteral(TESSLY_PACKAGING_BUILT "/com.brackmoor.tessly.desktop");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<std::string> commands;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("Exec=")) {
            const QList<QByteArray> words = line.mid(5).split(' ');
            // Desktops trust the program at this path, and no other.
            EXPECT_TRUE(words[0].startsWith('/')) << line.toStdString();
            EXPECT_TRUE(words[0].endsWith("/bin/tessly")) << line.toStdString();
            if (words.size() > 1) {
                EXPECT_NE(findCommand(words[1].toStdString()), nullptr) << line.toStdString();
                commands.push_back(words[1].toStdString());
            }
        }
    }
    EXPECT_THAT(commands, ElementsAre("show", "pause", "resume", "quit"));
    NEEDS(u"desktop-file-validate"_s);
    const Ran ran = run(u"desktop-file-validate"_s, {path});
    EXPECT_EQ(ran.output, "");
    EXPECT_EQ(ran.status, 0);
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

TEST(Documents, TheBusAndSystemdStartTheProgramByItsWholePath)
{
    for (const auto& [name, key] :
         {std::pair("com.brackmoor.tessly.service", "\nExec="),
          std::pair("tessly.service", "\nExecStart=")}) {
        const std::string text =
            contents(QStringLiteral(TESSLY_PACKAGING_BUILT "/") + QLatin1StringView(name))
                .toStdString();
        const auto at = text.find(key);
        ASSERT_NE(at, std::string::npos) << name;
        const std::string command =
            text.substr(at + std::strlen(key), text.find('\n', at + 1) - at - std::strlen(key));
        EXPECT_TRUE(std::regex_match(command, std::regex("/.*/bin/tessly"))) << command;
    }
}

TEST(Documents, TheMetainfoIsValid)
{
    NEEDS(u"appstreamcli"_s);
    const Ran ran = run(
        u"appstreamcli"_s, {u"validate"_s, u"--no-net"_s, u"--pedantic"_s,
                            QStringLiteral(TESSLY_PACKAGING "/com.brackmoor.tessly.metainfo.xml")});
    EXPECT_EQ(ran.status, 0) << ran.output.toStdString();
}

TEST(Documents, MetainfoAndPackageAreOfThisVersion)
{
    const std::string version = programVersion().toStdString();
    // Of several releases, the newest comes first.
    std::smatch found;
    const std::string metainfo =
        contents(QStringLiteral(TESSLY_PACKAGING "/com.brackmoor.tessly.metainfo.xml"))
            .toStdString();
    ASSERT_TRUE(std::regex_search(metainfo, found, std::regex("<release version=\"([^\"]*)\"")));
    EXPECT_EQ(found[1], version);
    const std::string changelog =
        contents(QStringLiteral(TESSLY_PACKAGING "/../debian/changelog")).toStdString();
    // A suffix of the package alone may follow.
    ASSERT_TRUE(std::regex_search(changelog, found, std::regex("^tessly \\(([0-9.]*)[^)]*\\)")));
    EXPECT_EQ(found[1], version);
}

} // namespace
} // namespace tessly
