#include "CommandLineParser.h"

#include "HelpText.h"
#include "TerminalText.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

QString toQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// An argument as it is shown: what is in it must not speak to the terminal.
QString inQuotes(std::string_view argument)
{
    return u'"' + terminalLine(toQString(argument)) + u'"';
}

Invocation wrong(const QString& reason)
{
    return {.verb = Invocation::Verb::wrongUsage, .text = reason};
}

Invocation print(QString text)
{
    return {.verb = Invocation::Verb::print, .text = std::move(text)};
}

/// A decimal number of digits alone.
std::optional<qint64> number(std::string_view text)
{
    const bool isDigits = !text.empty() && std::ranges::all_of(text, [](char character) {
        return character >= '0' && character <= '9';
    });
    bool fits = false;
    const qint64 value =
        QByteArrayView(text.data(), static_cast<qsizetype>(text.size())).toLongLong(&fits);
    return isDigits && fits ? std::optional(value) : std::nullopt;
}

/// The arguments behind a command, one after another.
class CommandParser
{
    using Operand = CommandDescription::Operand;

public:
    CommandParser(const CommandDescription& command, std::vector<std::string_view> arguments)
        : m_command(command)
        , m_arguments(std::move(arguments))
    {
        m_invocation.verb = Invocation::Verb::command;
        m_invocation.command = command.id;
    }

    Invocation parse()
    {
        if (std::ranges::any_of(m_arguments, isHelp)) {
            return print(QString::fromStdString(commandHelp(m_command)));
        }
        while (m_next < m_arguments.size() && !m_complaint) {
            const std::string_view argument = m_arguments[m_next++];
            if (!m_onlyOperands && argument == "--") {
                m_onlyOperands = true;
            } else if (!m_onlyOperands && argument.starts_with("--")) {
                parseOption(argument);
            } else {
                parseOperand(argument);
            }
        }
        if (!m_complaint && !m_hasOperand) {
            requireNone();
        }
        return m_complaint ? wrong(*m_complaint) : m_invocation;
    }

    static bool isHelp(std::string_view argument)
    {
        return argument == "--help" || argument == "-h";
    }

private:
    void parseOption(std::string_view argument)
    {
        const auto equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const auto option = std::ranges::find(m_command.options, name, &OptionDescription::name);
        if (option == m_command.options.end()) {
            complain(u"%1 has no option %2"_s.arg(inQuotes(full()), inQuotes(name)));
            return;
        }
        const bool takesValue = option->value != OptionDescription::Value::none;
        if (!takesValue && equals != std::string_view::npos) {
            complain(u"%1 takes no value"_s.arg(inQuotes(name)));
            return;
        }
        std::string_view value;
        if (takesValue && equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (takesValue && m_next < m_arguments.size()) {
            value = m_arguments[m_next++];
        } else if (takesValue) {
            complain(u"%1 needs a value"_s.arg(inQuotes(name)));
            return;
        }
        set(option->id, value);
    }

    void set(OptionID option, std::string_view value)
    {
        switch (option) {
        case OptionID::json:
            m_invocation.isJSON = true;
            break;
        case OptionID::plain:
            m_invocation.isPlain = true;
            break;
        case OptionID::everything:
            m_invocation.isEverything = true;
            break;
        case OptionID::null:
            m_invocation.isNullSeparated = true;
            break;
        case OptionID::query:
            m_invocation.query = toQString(value);
            if (m_invocation.query.size() > longestQuery) {
                complain(u"a query has %1 characters at the most"_s.arg(longestQuery));
            }
            break;
        case OptionID::kind:
            m_invocation.kind = clipKind(toQString(value));
            if (!m_invocation.kind) {
                complain(u"there is no kind %1"_s.arg(inQuotes(value)));
            }
            break;
        case OptionID::limit:
            if (const auto count = number(value)) {
                m_invocation.limit = *count;
            } else {
                complain(u"%1 is no number of entries"_s.arg(inQuotes(value)));
            }
            break;
        }
    }

    void parseOperand(std::string_view argument)
    {
        const bool isTaken = std::exchange(m_hasOperand, true);
        if (isTaken || m_command.operand == Operand::none) {
            complain(u"%1 takes no %2"_s.arg(inQuotes(full()), inQuotes(argument)));
        } else if (m_command.operand == Operand::position) {
            parsePosition(argument);
        } else {
            parseFile(argument);
        }
    }

    void parseFile(std::string_view argument)
    {
        // What looks like an option may be one of a later version.
        if (!m_onlyOperands && argument.size() > 1 && argument.starts_with('-')) {
            complain(u"%1 has no option %2"_s.arg(inQuotes(full()), inQuotes(argument)));
        } else if (argument.empty()) {
            complain(u"a file has a name"_s);
        }
        m_invocation.file = QByteArray(argument.data(), static_cast<qsizetype>(argument.size()));
    }

    void requireNone()
    {
        if (m_command.operand == Operand::position) {
            complain(u"%1 needs the position of an entry"_s.arg(inQuotes(full())));
        } else if (m_command.operand == Operand::file) {
            complain(u"%1 needs a file, or - for what is piped"_s.arg(inQuotes(full())));
        }
    }

    void parsePosition(std::string_view argument)
    {
        m_invocation.position = number(argument).value_or(0);
        if (m_invocation.position == 0) {
            complain(u"%1 is no position: positions are numbers from 1"_s.arg(inQuotes(argument)));
        }
    }

    void complain(const QString& reason)
    {
        if (!m_complaint) {
            m_complaint = reason + u"; see \"%1 --help\""_s.arg(toQString(full()));
        }
    }

    [[nodiscard]] std::string full() const { return "tessly " + std::string(m_command.name); }

    const CommandDescription& m_command;
    std::vector<std::string_view> m_arguments;
    std::size_t m_next = 0;
    bool m_onlyOperands = false;
    bool m_hasOperand = false;
    Invocation m_invocation;
    std::optional<QString> m_complaint;
};

} // namespace

Invocation parseCommandLine(const std::vector<const char*>& arguments)
{
    if (arguments.empty()) {
        return {};
    }
    const std::string_view first = arguments.front();
    if (const CommandDescription* const command = findCommand(first)) {
        return CommandParser(*command, {arguments.begin() + 1, arguments.end()}).parse();
    }
    const bool isAlone = arguments.size() == 1;
    if (CommandParser::isHelp(first) && isAlone) {
        return print(QString::fromStdString(helpText()));
    }
    if (first == "--version" && isAlone) {
        return print(u"tessly "_s + programVersion() + u'\n');
    }
    const bool isKnown = CommandParser::isHelp(first) || first == "--version";
    const QString reason = isKnown                  ? u"%1 stands alone"_s
                           : first.starts_with('-') ? u"there is no option %1"_s
                                                    : u"there is no command %1"_s;
    return wrong(reason.arg(inQuotes(first)) + u"; see \"tessly --help\""_s);
}

QString programVersion()
{
    return QStringLiteral(TESSLY_VERSION);
}

} // namespace tessly
