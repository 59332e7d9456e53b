// The arguments of a command. Fields: one each.

#include "CommandLineParser.h"
#include "FuzzInput.h"
#include "TerminalText.h"

#include <algorithm>

using namespace tessly;
using namespace tessly::fuzz;

namespace {

bool isOneLine(const QString& text)
{
    return std::ranges::none_of(text, [](QChar character) {
        return character.category() == QChar::Other_Control ||
               character.category() == QChar::Separator_Line ||
               character.category() == QChar::Separator_Paragraph;
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArrayList fields = FuzzInput(data, size).rest();
    std::vector<const char*> arguments;
    for (const QByteArray& field : fields) {
        // Up to its first NUL.
        arguments.push_back(field.constData());
    }
    const Invocation invocation = parseCommandLine(arguments);
    require(invocation.query.size() <= longestQuery, "a query is bounded");
    require(invocation.position >= 0, "a position is no less than none");
    switch (invocation.verb) {
    case Invocation::Verb::wrongUsage:
        require(
            !invocation.text.isEmpty() && isOneLine(invocation.text), "a complaint is one line");
        break;
    case Invocation::Verb::print:
        require(invocation.text.endsWith(u'\n'), "what is printed ends its line");
        break;
    case Invocation::Verb::start:
        require(arguments.empty(), "what is asked for is done");
        break;
    case Invocation::Verb::command:
        break;
    }
    for (const QByteArray& field : fields) {
        const QString text = QString::fromUtf8(field);
        const QString line = terminalLine(text);
        require(isOneLine(line), "a terminal obeys nothing of a text");
        require(terminalLine(line) == line, "a terminal's line stays as it is");
        require(terminalWidth(fitted(line, 20)) <= 20, "a text is cut to its columns");
        const QString json = jsonString(text);
        require(
            isOneLine(json) && json.startsWith(u'"') && json.endsWith(u'"') && json.size() >= 2,
            "a text in JSON is one string on one line");
    }
    return 0;
}
