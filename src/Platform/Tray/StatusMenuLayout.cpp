#include "StatusMenuLayout.h"

#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

/// A single "_" would underline the letter after it.
QString label(QString title)
{
    return title.replace(u'_', u"__"_s);
}

} // namespace

bool StatusMenuLayout::update(std::vector<StatusMenuItem> items)
{
    if (m_revision != 0 && items == m_items) {
        return false;
    }
    m_items = std::move(items);
    m_lines.clear();
    for (std::size_t index = 0; index < m_items.size(); ++index) {
        m_lines.push_back(numberOf(m_items[index], index));
    }
    ++m_revision;
    return true;
}

int StatusMenuLayout::numberOf(const StatusMenuItem& item, std::size_t index)
{
    // Separators are told apart by their place: no action is named like that.
    const QString name =
        item.isSeparator ? u'\0' + QString::number(static_cast<qulonglong>(index)) : item.action;
    if (const auto known = m_numbers.constFind(name); known != m_numbers.cend()) {
        return *known;
    }
    const auto next = static_cast<int>(m_numbers.size()) + 1;
    m_numbers.insert(name, next);
    return next;
}

const StatusMenuItem* StatusMenuLayout::item(int line) const
{
    const auto found = std::ranges::find(m_lines, line);
    return found == m_lines.end()
               ? nullptr
               : &m_items[static_cast<std::size_t>(std::distance(m_lines.begin(), found))];
}

std::optional<QVariantMap> StatusMenuLayout::properties(int line) const
{
    if (line == root) {
        return QVariantMap{{u"children-display"_s, u"submenu"_s}};
    }
    const StatusMenuItem* const found = item(line);
    if (found == nullptr) {
        return std::nullopt;
    }
    // What has its default value (visible, enabled, an ordinary line) is left out.
    QVariantMap properties;
    if (found->isSeparator) {
        properties.insert(u"type"_s, u"separator"_s);
        return properties;
    }
    properties.insert(u"label"_s, label(found->title));
    if (!found->isEnabled) {
        properties.insert(u"enabled"_s, false);
    }
    if (!found->keyText.isEmpty()) {
        const QList<QStringList> shortcut = {{u"Control"_s, found->keyText}};
        properties.insert(u"shortcut"_s, QVariant::fromValue(shortcut));
    }
    return properties;
}

std::optional<QString> StatusMenuLayout::action(int line) const
{
    const StatusMenuItem* const found = item(line);
    if (found != nullptr) {
        return found->isSeparator || !found->isEnabled ? std::nullopt
                                                       : std::optional(found->action);
    }
    const QString action = m_numbers.key(line);
    return action.isEmpty() || action.startsWith(u'\0') ? std::nullopt : std::optional(action);
}

} // namespace tessly
