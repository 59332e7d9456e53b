#pragma once

#include "StatusItem.h"

#include <QHash>
#include <QVariantMap>

#include <optional>
#include <vector>

namespace tessly {

/// The status menu as the com.canonical.dbusmenu protocol tells it: lines with numbers, and a
/// revision that grows with each change. The menu itself is line 0.
class StatusMenuLayout
{
public:
    static constexpr int root = 0;

    /// Takes the lines of an opening; whether anything differs from those before.
    bool update(std::vector<StatusMenuItem> items);

    [[nodiscard]] quint32 revision() const { return m_revision; }
    /// The numbers of the lines, in order.
    [[nodiscard]] const std::vector<int>& lines() const { return m_lines; }
    /// None if there is no such line (any more).
    [[nodiscard]] std::optional<QVariantMap> properties(int line) const;
    /// The action of a line that can be chosen. A number always means the same action, also once
    /// the menu has changed, so that a click on a line as it was shown does what it said.
    [[nodiscard]] std::optional<QString> action(int line) const;

private:
    [[nodiscard]] int numberOf(const StatusMenuItem& item, std::size_t index);
    [[nodiscard]] const StatusMenuItem* item(int line) const;

    std::vector<StatusMenuItem> m_items;
    std::vector<int> m_lines;
    QHash<QString, int> m_numbers;
    quint32 m_revision = 0;
};

} // namespace tessly
