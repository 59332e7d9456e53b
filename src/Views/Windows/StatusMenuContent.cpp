#include "StatusMenuContent.h"

#include <utility>

namespace tessly {

void StatusMenuContent::setItems(std::vector<StatusMenuItem> items)
{
    m_items = std::move(items);
    setCurrent(-1);
    Q_EMIT linesChanged();
}

QVariantList StatusMenuContent::lines() const
{
    QVariantList lines;
    for (const StatusMenuItem& item : m_items) {
        lines.append(QVariant::fromValue(StatusMenuLine{
            .title = item.title,
            .action = item.action,
            .isEnabled = item.isEnabled,
            .isSeparator = item.isSeparator,
            .keys = item.keyText.isEmpty() ? QString() : u'⌘' + item.keyText.toUpper(),
        }));
    }
    return lines;
}

void StatusMenuContent::setCurrent(int line)
{
    if (!canBeChosen(line)) {
        line = -1;
    }
    if (std::exchange(m_current, line) != line) {
        Q_EMIT currentChanged();
    }
}

bool StatusMenuContent::press(int key, Qt::KeyboardModifiers modifiers)
{
    switch (key) {
    case Qt::Key_Down:
    case Qt::Key_Tab:
        move(1);
        return true;
    case Qt::Key_Up:
    case Qt::Key_Backtab:
        move(-1);
        return true;
    case Qt::Key_Home:
        setCurrent(-1);
        move(1);
        return true;
    case Qt::Key_End:
        setCurrent(-1);
        move(-1);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        choose(m_current);
        return true;
    case Qt::Key_Escape:
        Q_EMIT dismissed();
        return true;
    default:
        break;
    }
    if (modifiers != Qt::ControlModifier) {
        return false;
    }
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        const QString& text = m_items[i].keyText;
        if (!text.isEmpty() && text.front().toUpper().unicode() == key) {
            choose(static_cast<int>(i));
            return true;
        }
    }
    return false;
}

void StatusMenuContent::choose(int line)
{
    if (canBeChosen(line)) {
        Q_EMIT chosen(m_items[static_cast<std::size_t>(line)].action);
    }
}

bool StatusMenuContent::canBeChosen(int line) const
{
    if (line < 0 || line >= static_cast<int>(m_items.size())) {
        return false;
    }
    const StatusMenuItem& item = m_items[static_cast<std::size_t>(line)];
    return !item.isSeparator && item.isEnabled;
}

void StatusMenuContent::move(int step)
{
    const int count = static_cast<int>(m_items.size());
    int line = m_current < 0 && step < 0 ? count : m_current;
    for (int i = 0; i < count; ++i) {
        line = (line + step + count) % count;
        if (canBeChosen(line)) {
            setCurrent(line);
            return;
        }
    }
}

} // namespace tessly
