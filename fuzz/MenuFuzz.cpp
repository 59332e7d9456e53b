// What a desktop asks of the status menu. Fields: calls, of each the first byte is which, the
// second the number of a line, the rest a name.

#include "FuzzInput.h"
#include "StatusMenuAdaptor.h"

#include <QObject>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace tessly;
using namespace tessly::fuzz;

namespace {

/// Menus that differ, as pausing and the history make them.
std::vector<StatusMenuItem> menu(int number)
{
    std::vector<StatusMenuItem> items = {
        {.title = u"Open Quick Paste"_s, .action = u"open"_s},
        {.isSeparator = true},
        {.title = number % 2 == 0 ? u"Pause"_s : u"Resume"_s,
         .action = number % 2 == 0 ? u"pause"_s : u"resume"_s,
         .isEnabled = number % 3 != 0},
        {.isSeparator = true},
        {.title = u"Quit"_s, .action = u"quit"_s, .keyText = u"Q"_s},
    };
    items.resize(items.size() - static_cast<std::size_t>(number % 4));
    return items;
}

int lineOf(char byte)
{
    // Of those there are, and some that there are not.
    return byte == '~' ? -1 : byte == '}' ? 1'000'000 : static_cast<unsigned char>(byte) % 12;
}

class Desktop
{
public:
    void call(const QByteArray& field)
    {
        const int line = field.size() > 1 ? lineOf(field[1]) : 0;
        const QString name = QString::fromUtf8(field.mid(2));
        switch (field.isEmpty() ? '\0' : field.front()) {
        case 'l': {
            StatusMenuTree layout;
            m_adaptor.GetLayout(line, field.size() > 2 ? field[2] : -1, {name}, layout);
            m_adaptor.GetLayout(line, -1, {}, layout);
            require(layout.id == line, "a layout is of the line that was asked for");
            break;
        }
        case 'p':
            (void)m_adaptor.GetProperty(line, name);
            break;
        case 'g':
            for (const StatusMenuProperties& found :
                 m_adaptor.GetGroupProperties({line, line + 1}, {})) {
                require(!found.properties.isEmpty() || found.id == 0, "a line has properties");
            }
            break;
        case 'c':
            m_adaptor.Event(line, u"clicked"_s, QDBusVariant(name), 0);
            break;
        case 'e':
            m_adaptor.EventGroup(
                {{line, name, QDBusVariant(0), 1}, {line + 1, u"clicked"_s, {}, 2}});
            break;
        case 'a':
            m_adaptor.AboutToShow(line);
            break;
        case 's': {
            QList<int> errors;
            m_adaptor.AboutToShowGroup({line, 0, line + 7}, errors);
            break;
        }
        default:
            // Another menu at the next opening.
            ++m_number;
        }
    }

private:
    void choose(const QString& action)
    {
        require(
            (QStringList{u"open"_s, u"pause"_s, u"resume"_s, u"quit"_s}).contains(action),
            "what is chosen is an action of the menu");
    }

    int m_number = 0;
    QObject m_parent;
    // The parent deletes it.
    StatusMenuAdaptor& m_adaptor = *new StatusMenuAdaptor(
        {.menu = [this] { return menu(m_number); },
         .opening = [] {},
         .chosen = [this](const QString& action) { choose(action); }},
        &m_parent);
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Desktop desktop;
    for (const QByteArray& field : FuzzInput(data, size).rest()) {
        desktop.call(field);
    }
    return 0;
}
