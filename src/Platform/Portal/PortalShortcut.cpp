#include "PortalShortcut.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <linux/input-event-codes.h>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// Virtual key codes, the names of the keys, and the keys themselves.
struct KeyName
{
    quint32 keyCode;
    char16_t name;
    std::uint32_t key;
};
constexpr std::array<KeyName, 10> keyNames = {{
    {18, u'1', KEY_1},
    {19, u'2', KEY_2},
    {20, u'3', KEY_3},
    {21, u'4', KEY_4},
    {23, u'5', KEY_5},
    {22, u'6', KEY_6},
    {26, u'7', KEY_7},
    {28, u'8', KEY_8},
    {25, u'9', KEY_9},
    {29, u'0', KEY_0},
}};

/// The modifiers' names, then the key's; none if there is no such modifier.
std::optional<QString> trigger(quint32 modifiers, const QString& key)
{
    QStringList names;
    const auto add = [&](quint32 modifier, const QString& name) {
        if ((modifiers & modifier) != 0) {
            names << name;
            modifiers &= ~modifier;
        }
    };
    // Command is the Ctrl key here, Option is Alt, and Control, which is left over, is Super.
    add(HotKeyCenter::commandKey, u"CTRL"_s);
    add(HotKeyCenter::optionKey, u"ALT"_s);
    add(HotKeyCenter::shiftKey, u"SHIFT"_s);
    add(HotKeyCenter::controlKey, u"LOGO"_s);
    if (modifiers != 0) {
        return std::nullopt;
    }
    names << key;
    return names.join(u'+');
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& value)
{
    argument.beginStructure();
    argument << value.id << value.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& value)
{
    argument.beginStructure();
    argument >> value.id >> value.properties;
    argument.endStructure();
    return argument;
}

std::optional<QString> portalTrigger(quint32 keyCode, quint32 modifiers)
{
    const auto* const key = std::ranges::find(keyNames, keyCode, &KeyName::keyCode);
    return key != keyNames.end() ? trigger(modifiers, QString(QChar(key->name))) : std::nullopt;
}

std::optional<QString>
kdeTrigger(quint32 keyCode, quint32 modifiers, const SymbolWithShift& symbolWithShift)
{
    const auto* const key = std::ranges::find(keyNames, keyCode, &KeyName::keyCode);
    const bool isWithShift = (modifiers & HotKeyCenter::shiftKey) != 0;
    if (key != keyNames.end() && isWithShift) {
        if (const QByteArray symbol = symbolWithShift(key->key); !symbol.isEmpty()) {
            return trigger(modifiers & ~HotKeyCenter::shiftKey, QString::fromLatin1(symbol));
        }
    }
    return portalTrigger(keyCode, modifiers);
}

PortalShortcut directPasteShortcut(HotKeyCenter::KeyID key)
{
    const QString number = u"%1"_s.arg(key.id, 2, 10, QChar(u'0'));
    return {
        .id = u"paste-"_s + number,
        .properties = {{u"description"_s, u"Paste entry "_s + number}},
    };
}

} // namespace tessly
