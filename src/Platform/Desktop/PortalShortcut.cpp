#include "PortalShortcut.h"

#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// Virtual key codes and the names of the keys.
struct KeyName
{
    quint32 keyCode;
    char16_t name;
};
constexpr std::array<KeyName, 10> keyNames = {{
    {18, u'1'},
    {19, u'2'},
    {20, u'3'},
    {21, u'4'},
    {23, u'5'},
    {22, u'6'},
    {26, u'7'},
    {28, u'8'},
    {25, u'9'},
    {29, u'0'},
}};

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
    if (key == keyNames.end()) {
        return std::nullopt;
    }
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
    names << QString(QChar(key->name));
    return names.join(u'+');
}

PortalShortcut directPasteShortcut(HotKeyCenter::KeyID key)
{
    return {
        .id = u"paste-%1"_s.arg(key.id),
        .properties = {{u"description"_s, u"Paste entry %1"_s.arg(key.id)}},
    };
}

} // namespace tessly
